// An SMBus mux whose control register is set by a send byte, such as the PCA9548 (NXP PCA9548A data
// sheet, "Control register": bit n connects channel n).
#pragma once

#include "OrbisGeneric/Components/Device.h"
#include "OrbisGeneric/Components/Mux.h"

namespace Drivers {

class GenericSmbusMux : public Component::HardwareDevice {
 public:
   static Component::HardwareDevice *create( const DriverArgs &args, Ham::Ham *ham );
   Component::LogicalDevice::Mux *newMux( const DriverArgs &args, unsigned int value ) override;

   // The value is the control byte. So the id of a bus below the mux is the control byte that
   // connects it (1, 2, 4, ... 128).
   class Mux : public Component::LogicalDevice::Mux {
    public:
      Mux( GenericSmbusMux *device, uint32_t value ) : device_( device ), value_( value ) {}

      bool selectRequest( Ham::Ham *ham ) override;
      bool resetRequest( Ham::Ham *ham ) override;
      pl_status executeMuxRequest() override;
      GenericSmbusMux *device() const override { return device_; }

      GenericSmbusMux *device_;
      uint32_t value_; // only the low byte is used
   };
};

} // namespace Drivers
