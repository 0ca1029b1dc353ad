// GPIO lines. RegGpio is a line that needs no driver: one bit of a register of a chip.
#pragma once

#include "OrbisGeneric/Components/Device.h"
#include "OrbisGeneric/Components/Record.h"

namespace Component::LogicalDevice {

class Gpio {
 public:
   pl_gpio record_{ nullptr, &ops_, this };
   bool hostFlag_ = false; // for the host, which finds it right after the record; not used here

   virtual ~Gpio() = default;
   virtual pl_status bitClear() = 0;
   virtual pl_status bitSet() = 0;
   virtual pl_status bitRead( unsigned int *value ) = 0;

   static pl_status bitSetCallback( pl_gpio *gpio );
   static pl_status bitClearCallback( pl_gpio *gpio );
   static pl_status bitReadCallback( pl_gpio *gpio, unsigned int *value );
   static const pl_gpio_ops ops_;
};

static_assert( isTableSize<pl_gpio_ops>( 16 ) );

// Bit "bitpos" of the 8-bit register "register" of a device. Setting and clearing read the register
// and write it back in two batches, so another user of the register can change it in between.
class RegGpio : public Gpio {
 public:
   RegGpio( HardwareDevice *owner, const Drivers::DriverArgs &args );

   pl_status bitClear() override;
   pl_status bitSet() override;
   pl_status bitRead( unsigned int *value ) override;

   HardwareDevice *device;
   bool writeOnly = false; // true: writes without reading the register first
   int reg;
   int bitpos;

 private:
   pl_status readModifyWrite( uint8_t unread, uint8_t keep, uint8_t set );
};

} // namespace Component::LogicalDevice
