// A status LED, and the one timer that blinks the LEDs which can't blink by themselves.
#pragma once

#include "OrbisGeneric/Components/Record.h"

#include <list>

namespace Component::LogicalDevice {

class Led {
 public:
   pl_led record_{ nullptr, &ops_, this };
   bool usesBlinkTimer = false; // set by a driver whose LED blinks in software

   virtual ~Led() = default;
   // Shows the on or off phase. True: stay on the blink list; false: take this LED off it.
   virtual bool handleBlinkTimer( bool on ) = 0;
   virtual pl_status setLightSetting( pl_led_status status ) = 0;

   static const char *getLedStatusString( pl_led_status status );

   // Makes the shared timer, unarmed, unless it exists.
   static void createBlinkTimer();
   // Puts an LED on the blink list, at the end and without looking for duplicates. The first one
   // arms the timer; later ones join its phase.
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
