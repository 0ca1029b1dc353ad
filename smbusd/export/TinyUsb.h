// A USB device that is an I2C adapter for the kernel's driver i2c-tiny-usb: one vendor request for
// each I2C message (drivers/i2c/busses/i2c-tiny-usb.c).
#pragma once

#include "simulator/bus/SimulatedBus.h"
#include "smbusd/export/UsbIp.h"

#include <string>
#include <vector>

namespace Smbusd::Export {

// The driver asks for the status after each message. A write without a stop waits for the next
// message: both are carried out together, so that no other transfer comes between them. A read
// without a stop gets a stop anyway.
class TinyUsb {
 public:
   // The bus outlives it. The serial number identifies the device in sysfs.
   TinyUsb( Simulator::SimulatedBus &bus, std::string serial )
      : bus_( bus ), serial_( std::move( serial ) ) {}

   ControlAnswer answer( const ControlRequest & );

 private:
   ControlAnswer standard( const ControlRequest & ) const;
   ControlAnswer descriptor( uint8_t type, uint8_t index ) const;
   ControlAnswer message( const ControlRequest & );

   Simulator::SimulatedBus &bus_;
   const std::string serial_;
   std::vector<Simulator::BusMessage> waiting_; // since the start
   bool acknowledged_ = false;                  // the last messages
};

} // namespace Smbusd::Export
