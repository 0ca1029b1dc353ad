// A status LED. LEDs that blink in software share one timer.
#pragma once

#include "OrbisGeneric/Components/Record.h"

#include <list>

namespace Component::LogicalDevice {

class Led {
 public:
   pl_led record_{ nullptr, &ops_, this };
   bool usesBlinkTimer = false; // set by a driver when its LED blinks in software

   virtual ~Led() = default;
   // Shows the on or the off phase. True: keep this LED on the blink list. False: remove it.
   virtual bool handleBlinkTimer( bool on ) = 0;
   virtual pl_status setLightSetting( pl_led_status status ) = 0;

   static const char *getLedStatusString( pl_led_status status );

   // Makes the shared timer, unless it exists. The timer is not armed.
   static void createBlinkTimer();
   // Adds an LED at the end of the blink list, without a check for duplicates. The first LED arms
   // the timer; later LEDs join its phase.
   static void notifyOnBlink( Led *led );
   static void handleBlinkTimerCallback( void * );

   static pl_timer_handle blinkTimer_;
   static uint32_t blinkPeriod_; // milliseconds
   static bool blinkStatus_;     // phase of the next tick
   static std::list<Led *> notifyList_;

   static pl_status setLightSettingCallback( pl_led *led, pl_led_status status );
   static const pl_led_ops ops_;
};

static_assert( isTableSize<pl_led_ops>( 8 ) );

} // namespace Component::LogicalDevice
