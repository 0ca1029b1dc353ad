#include "OrbisGeneric/Drivers/GPIOExpander.h"

#include "OrbisGeneric/Assert.h"
#include "OrbisGeneric/Ham/Ham.h"
#include "OrbisGeneric/HostServices.h"

namespace Drivers {

// A negative bank, bit or pin becomes a large number in the variable that is asserted, so that no
// assertion lets it pass.

void GPIOExpander::init( int banks, unsigned cacheSeconds, uint8_t input, uint8_t output,
                         uint8_t config ) {
   const auto size = static_cast<size_t>( banks ) + 1;
   inputTime.assign( size, 0 );
   inputValue.assign( size, 0 );
   pendingOut.assign( size, -1 );
   numBanks = banks;
   inputCacheSeconds = cacheSeconds;
   inputBase = input;
   outputBase = output;
   configBase = config;
}

pl_status GPIOExpander::getInBank( int bank, uint8_t *value ) {
   const long long n = static_cast<unsigned>( bank );
   assert( n <= numBanks );
   time_t &readAt = inputTime[static_cast<size_t>( n )];
   uint8_t &cached = inputValue[static_cast<size_t>( n )];
   const time_t now = time( nullptr );
   if ( difftime( now, readAt ) > inputCacheSeconds ) {
      uint8_t read = 0;
      if ( pl_status status = ham_->read8( inputBankAddr( bank ), &read ) ) {
         PL_TRACE( 0, "Error: status %d while reading input bank %d", status, bank );
         return status;
      }
      cached = read;
      readAt = now;
   }
   *value = cached;
   PL_TRACE( 5, "GPIOExpander::getInBank( %d ) = %x", bank, *value );
   return PL_STATUS_OK;
}

pl_status GPIOExpander::readBit( int bank, int bitInBank, bool *value ) {
   const auto bit = static_cast<unsigned>( bitInBank );
   assert( bit <= 7 );
   uint8_t byte = 0;
   if ( pl_status status = getInBank( bank, &byte ) ) {
      PL_TRACE( 5, "Error %d: GPIOExpander::readBit( %d, %d )", status, bank, bitInBank );
      return status;
   }
   *value = byte >> bit & 1;
   PL_TRACE( 5, "GPIOExpander::readBit( %d, %d ) = %d", bank, bitInBank, *value );
   return PL_STATUS_OK;
}

pl_status GPIOExpander::readBit( int pin, bool *value ) {
   return readBit( pin / 8, pin % 8, value );
}

pl_status GPIOExpander::getOutBank( int bank, uint8_t *value ) {
   const long long n = static_cast<unsigned>( bank );
   assert( n <= numBanks );
   int16_t &pending = pendingOut[static_cast<size_t>( n )];
   if ( pending < 0 ) {
      uint8_t read = 0;
      if ( pl_status status = ham_->read8( outputBankAddr( bank ), &read ) ) {
         PL_TRACE( 0, "Error: status %d while reading output bank %d", status, bank );
         return status;
      }
      pending = read;
   }
   *value = static_cast<uint8_t>( pending );
   PL_TRACE( 5, "GPIOExpander::getoutBank( %d ) = %x", bank, *value );
   return PL_STATUS_OK;
}

pl_status GPIOExpander::writeBit( int bank, int bitInBank, bool value ) {
   const auto bit = static_cast<unsigned>( bitInBank );
   assert( bit <= 7 );
   uint8_t byte = 0;
   if ( pl_status status = getOutBank( bank, &byte ) )
      return status;
   const unsigned mask = 1u << bit;
   pendingOut[static_cast<size_t>( bank )] =
      static_cast<uint8_t>( value ? byte | mask : byte & ~mask );
   return PL_STATUS_OK;
}

pl_status GPIOExpander::writeBit( int pin, bool value ) {
   return writeBit( pin / 8, pin % 8, value );
}

pl_status GPIOExpander::save() {
   PL_TRACE( 5, "GPIOExpander::save" );
   ham_->prepare();
   bool queued = false;
   for ( int bank = 0; bank < numBanks; ++bank ) {
      int16_t &pending = pendingOut[static_cast<size_t>( bank )];
      if ( pending <= 0 )
         continue;
      PL_TRACE( 5, " GPIOExpander::save -- writing output bank %d = %d", bank, pending );
      ham_->addWrite8( outputBankAddr( bank ), static_cast<uint8_t>( pending ), false );
      pending = -1;
      queued = true;
   }
   if ( !queued )
      return PL_STATUS_OK;
   const pl_status status = ham_->execute();
   if ( status != PL_STATUS_OK )
      PL_TRACE( 0, "Error: status %d writing to GPIOExpander", status );
   return status;
}

pl_status GPIOExpander::writeConfig( const uint8_t *cfg ) {
   ham_->prepare();
   for ( int n = 0; n < numBanks; ++n )
      ham_->addWrite8( configBankAddr( n ), cfg[n], false );
   return ham_->execute();
}

} // namespace Drivers
