#include "OrbisGeneric/Drivers/Kelt/CelesticaLed.h"

#include "OrbisGeneric/Ham/Ham.h"
#include "OrbisGeneric/Host.h"

#include <cassert>

namespace Drivers {

using namespace CelesticaCPLDMap;

pl_status CelXcvrCPLD::Led::readLeds( uint8_t *leds ) {
   const pl_status status = cpld_->ham_->read8( ledRegister, leds );
   if ( status != PL_STATUS_OK )
      PL_TRACE( 0, "Error reading CPLD led register" );
   return status;
}

bool CelXcvrCPLD::Led::handleBlinkTimer( bool on ) {
   uint8_t leds = 0;
   if ( readLeds( &leds ) != PL_STATUS_OK )
      return false;
   leds &= static_cast<uint8_t>( ~psuLedMask( id_ ) );
   if ( !on )
      leds |= psuLedMask( id_ );
   cpld_->ham_->prepare();
   return cpld_->ham_->write8( ledRegister, leds, false ) == PL_STATUS_OK;
}

pl_status CelXcvrCPLD::SystemLed::setLightSetting( pl_led_status status ) {
   PL_TRACE( 6, "setting CPLD System Led %hhu to %s", id_, getLedStatusString( status ) );
   uint8_t leds = 0;
   if ( pl_status failure = readLeds( &leds ) )
      return failure;
   leds &= static_cast<uint8_t>( ~systemLedMask );
   switch ( status ) {
   case PL_LED_OFF:
   case PL_LED_BAD:
   case PL_LED_UNKNOWN:
      leds |= systemLedOff;
      break;
   case PL_LED_GOOD:
      leds |= systemLedGood;
      break;
   case PL_LED_BEACON:
      leds |= systemLedBeacon;
      break;
   default:
      PL_TRACE( 0, "led %hhu was given an unexpected setting %d", id_, status );
      return PL_STATUS_UNSUPPORTED;
   }
   const pl_status written = cpld_->ham_->write8( ledRegister, leds, false );
   if ( written != PL_STATUS_OK )
      PL_TRACE( 6, "Setting status for KeltCPLD System LED-%hhu failed.", id_ );
   return written;
}

pl_status CelXcvrCPLD::PsuLed::setLightSetting( pl_led_status status ) {
   assert( 0 <= id_ && id_ <= 1 );
   PL_TRACE( 6, "setting CPLD PSU Led %hhu to %s", id_, getLedStatusString( status ) );
   if ( status != PL_LED_BEACON && blinking_ ) {
      notifyList_.remove( this );
      blinking_ = false;
   }
   uint8_t leds = 0;
   if ( pl_status failure = readLeds( &leds ) )
      return failure;
   const auto lit = static_cast<uint8_t>( leds & ~psuLedMask( id_ ) );
   const auto dark = static_cast<uint8_t>( lit | psuLedMask( id_ ) );
   switch ( status ) {
   case PL_LED_GOOD:
      leds = lit;
      break;
   case PL_LED_OFF:
   case PL_LED_BAD:
      leds = dark;
      break;
   case PL_LED_BEACON:
      if ( blinking_ )
         return PL_STATUS_OK;
      notifyOnBlink( this );
      blinking_ = true;
      return cpld_->ham_->write8( ledRegister, dark, false );
   default:
      PL_TRACE( 0, "led %hhu was given an unexpected setting %d", id_, status );
      return PL_STATUS_UNSUPPORTED;
   }
   const pl_status written = cpld_->ham_->write8( ledRegister, leds, false );
   if ( written != PL_STATUS_OK )
      PL_TRACE( 6, "Setting status for KeltCPLD PSU LED-%hhu failed.", id_ );
   return written;
}

} // namespace Drivers
