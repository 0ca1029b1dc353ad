#pragma once

#include "smbusd/busses/linux/AdapterFinder.h"
#include "smbusd/export/TinyUsb.h"
#include "smbusd/export/VhciPort.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace Smbusd::Export {

// Makes a simulated bus an i2c adapter of this machine, so that kernel drivers and i2c programs can
// use the simulated chips. The adapter disappears with this object.
class ExportedAdapter {
 public:
   // The name becomes the serial number of the USB device. Throws ExportError.
   ExportedAdapter( std::unique_ptr<Simulator::SimulatedBus> bus, const std::string &name );
   ~ExportedAdapter();

   // Waits until the kernel's driver has made an adapter, and returns its number; nothing if it
   // takes longer than patience.
   std::optional<unsigned> adapter( std::chrono::milliseconds patience ) const;

 private:
   void serve();

   const std::unique_ptr<Simulator::SimulatedBus> bus_;
   const std::string name_;
   TinyUsb device_;
   VhciPort port_;
   std::thread thread_;
};

// The number of the adapter of the USB device with this serial number, if there is one.
std::optional<unsigned> findExported( const std::string &name, const Linux::Places & );

} // namespace Smbusd::Export
