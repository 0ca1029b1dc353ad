// The LEDs on the CPLD's LED register.
#pragma once

#include "OrbisGeneric/Drivers/Kelt/CelesticaCPLD.h"

namespace Drivers {

// An LED of the CPLD's LED register; on the blink list while it blinks in software.
class CelXcvrCPLD::Led : public Component::LogicalDevice::Led {
 public:
   Led( CelXcvrCPLD *cpld, uint8_t id ) : cpld_( cpld ), id_( id ) {}
   bool handleBlinkTimer( bool on ) override;

 protected:
   pl_status readLeds( uint8_t *leds );

   CelXcvrCPLD *cpld_;
   uint8_t id_; // from 0
   bool blinking_ = false;
};

// Both ids drive the same two bits; the id tells them apart in messages only. The CPLD itself
// blinks it.
class CelXcvrCPLD::SystemLed : public Led {
 public:
   using Led::Led;
   pl_status setLightSetting( pl_led_status status ) override;
};

// A supply's LED, lit by a 0; it blinks in software.
class CelXcvrCPLD::PsuLed : public Led {
 public:
   PsuLed( CelXcvrCPLD *cpld, uint8_t id ) : Led( cpld, id ) { usesBlinkTimer = true; }
   pl_status setLightSetting( pl_led_status status ) override;
};

} // namespace Drivers
