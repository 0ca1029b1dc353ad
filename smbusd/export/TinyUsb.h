// A USB device that is an I2C adapter, as the kernel's driver i2c-tiny-usb knows it: requests of
// its vendor's, one for each message (drivers/i2c/busses/i2c-tiny-usb.c).
#pragma once

#include "simulator/bus/SimulatedBus.h"
#include "smbusd/export/UsbIp.h"

#include <string>
#include <vector>

namespace Smbusd::Export {

// The driver asks for the status after each message. Messages that are written without a stop
// behind them wait for the next one, since what they bring forth shows at the end: nobody else gets
// onto the bus between them. A read without a stop behind it gets one all the same.
class TinyUsb {
 public:
   // The bus outlives it. The serial number is how the device is found again in sysfs.
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
   bool acknowledged_ = false;                  // what was last carried out
};

} // namespace Smbusd::Export
