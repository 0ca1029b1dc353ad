#include "OrbisGeneric/Components/Led.h"

#include "OrbisGeneric/Assert.h"
#include "OrbisGeneric/Components/Add.h"
#include "OrbisGeneric/LibraryInit.h"

#include <iterator>

namespace Component::LogicalDevice {

pl_timer_handle Led::blinkTimer_ = nullptr;
uint32_t Led::blinkPeriod_ = 1000;
bool Led::blinkStatus_ = false;
std::list<Led *> Led::notifyList_;

const char *Led::getLedStatusString( pl_led_status status ) {
   static const char *const strs[] = { "Off",      "Good",    "Warning", "Bad",
                                       "Inactive", "Unknown", "Beacon" };
   // clang-format off
   assert( ( unsigned )status < sizeof ( strs ) / sizeof ( *strs ) );
   // clang-format on
   return strs[status];
}

void Led::createBlinkTimer() {
   if ( blinkTimer_ )
      return;
   PL_TRACE( 0, "creating unique led blink timer" );
   blinkTimer_ = HostServices::timerAdd( handleBlinkTimerCallback, nullptr );
   if ( !blinkTimer_ )
      PL_TRACE( 0, "failed to create blink timer" );
   assert( blinkTimer_ );
}

void Led::notifyOnBlink( Led *led ) {
   PL_TRACE( 4, "%s() adding led to blink notification list", __func__ );
   assert( blinkTimer_ );
   notifyList_.push_back( led );
   if ( notifyList_.size() == 1 )
      HostServices::timerSet( blinkTimer_, blinkPeriod_ );
}

void Led::handleBlinkTimerCallback( void * ) {
   PL_TRACE( 4, "%s() led blink timer hit notifying %zu leds", __func__, notifyList_.size() );
   for ( auto led = notifyList_.begin(); led != notifyList_.end(); ) {
      if ( ( *led )->handleBlinkTimer( blinkStatus_ ) ) {
         ++led;
         continue;
      }
      // This tick skips the LED after a removed one. When the last LED of the list was removed, the
      // loop starts again at the first LED, with the same phase.
      led = notifyList_.erase( led );
      led = led == notifyList_.end() ? notifyList_.begin() : std::next( led );
   }
   if ( !notifyList_.empty() )
      HostServices::timerSet( blinkTimer_, blinkPeriod_ );
   blinkStatus_ = !blinkStatus_;
}

pl_status Led::setLightSettingCallback( pl_led *led, pl_led_status status ) {
   PL_TRACE( 4, "%s(%p, %d)", __func__, static_cast<void *>( led ), status );
   return objectOf<Led>( led )->setLightSetting( status );
}

const pl_led_ops Led::ops_ = { sizeof( pl_led_ops ), setLightSettingCallback };

} // namespace Component::LogicalDevice

pl_status pl_led_init( const char *topology ) {
   return static_cast<pl_status>( orbisLibraryInit( __func__, topology, connectionAttempts ) );
}

pl_led *pl_led_add( const char *json ) {
   auto *led = Component::addObject( json, &Component::DeviceBase::newLed, "newLed() failed" );
   if ( !led )
      return nullptr;
   if ( led->usesBlinkTimer )
      Component::LogicalDevice::Led::createBlinkTimer();
   return &led->record_;
}
