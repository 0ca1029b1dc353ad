// A GPIO expander with banks of eight pins, such as the PCA9506. It has a cache of the input banks,
// and it collects output changes until save(). Pin p is bit p % 8 of bank p / 8. An assertion fails
// on a bank, bit or pin that is negative or too large.
#pragma once

#include "OrbisGeneric/Components/Device.h"

#include <ctime>

namespace Drivers {

class GPIOExpander : public Component::HardwareDevice {
 public:
   using Component::HardwareDevice::init;
   // banks: number of banks. cacheSeconds: an older input bank is read again. input, output,
   // config: the registers of the first bank of each kind.
   void init( int banks, unsigned cacheSeconds, uint8_t input, uint8_t output, uint8_t config );

   pl_status getInBank( int bank, uint8_t *value );
   pl_status readBit( int bank, int bitInBank, bool *value );
   pl_status readBit( int pin, bool *value );
   // The value that the next save() writes to the bank. When nothing is pending, the value is read
   // from the chip, and it is pending from then on.
   pl_status getOutBank( int bank, uint8_t *value );
   // The change is pending: save() writes it to the chip.
   pl_status writeBit( int bank, int bitInBank, bool value );
   pl_status writeBit( int pin, bool value );
   // Writes all pending banks in one batch. A bank whose new value is 0 is not written and stays
   // pending.
   pl_status save();
   // cfg has numBanks bytes. A bit of 1 makes its pin an input.
   pl_status writeConfig( const uint8_t *cfg );

   uint8_t inputBankAddr( int n ) const { return static_cast<uint8_t>( inputBase + n ); }
   uint8_t outputBankAddr( int n ) const { return static_cast<uint8_t>( outputBase + n ); }
   uint8_t configBankAddr( int n ) const { return static_cast<uint8_t>( configBase + n ); }

 protected:
   // One element more than there are banks: the bank number numBanks is accepted.
   std::vector<time_t> inputTime;
   std::vector<uint8_t> inputValue;
   std::vector<int16_t> pendingOut; // -1: nothing is pending
   int numBanks = 0;
   unsigned inputCacheSeconds = 0;
   uint8_t inputBase = 0;
   uint8_t outputBase = 0;
   uint8_t configBase = 0;
};

} // namespace Drivers
