// A banked GPIO expander such as the PCA9506: a cache of the input banks, and output changes that
// gather until save(). A pin p is bit p % 8 of bank p / 8.
#pragma once

#include "OrbisGeneric/Components/Device.h"

#include <ctime>

namespace Drivers {

class GPIOExpander : public Component::HardwareDevice {
 public:
   using Component::HardwareDevice::init;
   // Banks of eight pins; inputs are read again after so many seconds; the register
   // numbers of the first input, output and configuration bank.
   void init( int banks, unsigned cacheSeconds, uint8_t input, uint8_t output, uint8_t config );

   pl_status getInBank( int n, uint8_t *value );
   pl_status readBit( int bank, int bit, bool *value );
   pl_status readBit( int pin, bool *value );
   // What the bank is to be at the next save(); read from the chip when nothing is pending, and
   // pending from then on.
   pl_status getOutBank( int n, uint8_t *value );
   // No bus write: the change is pending.
   pl_status writeBit( int bank, int bit, bool value );
   pl_status writeBit( int pin, bool value );
   // Writes what is pending in one batch. A bank whose new value is 0 is not written and stays
   // pending.
   pl_status save();
   // numBanks bytes; a 1 makes a pin an input.
   pl_status writeConfig( const uint8_t *cfg );

   uint8_t inputBankAddr( int n ) const { return static_cast<uint8_t>( inputBase + n ); }
   uint8_t outputBankAddr( int n ) const { return static_cast<uint8_t>( outputBase + n ); }
   uint8_t configBankAddr( int n ) const { return static_cast<uint8_t>( configBase + n ); }

 protected:
   // One more of each than there are banks: a bank number equal to theirs passes.
   std::vector<time_t> inputTime;
   std::vector<uint8_t> inputValue;
   std::vector<int16_t> pendingOut; // -1: nothing
   int numBanks = 0;
   unsigned inputCacheSeconds = 0;
   uint8_t inputBase = 0;
   uint8_t outputBase = 0;
   uint8_t configBase = 0;
};

} // namespace Drivers
