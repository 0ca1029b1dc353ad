// A device that makes only register GPIOs.
#pragma once

#include "OrbisGeneric/Components/Device.h"

namespace Drivers {

class Dummy : public Component::HardwareDevice {
 public:
   static Component::HardwareDevice *create( const DriverArgs &, Ham::Ham * ) { return new Dummy; }
};

} // namespace Drivers
