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

// A simulated bus that this machine's kernel has as an adapter, so that its drivers and all
// programs for i2c work on the simulated chips. Ends with the object.
class ExportedAdapter {
 public:
   // The name becomes the USB device's serial number. Throws ExportError.
   ExportedAdapter( std::unique_ptr<Simulator::SimulatedBus> bus, const std::string &name );
   ~ExportedAdapter();

   // The number of the adapter that the kernel's driver has made of it; waits for that. Nothing
   // when none has come by then.
   std::optional<unsigned> adapter( std::chrono::milliseconds patience ) const;

 private:
   void serve();

   const std::unique_ptr<Simulator::SimulatedBus> bus_;
   const std::string name_;
   TinyUsb device_;
   VhciPort port_;
   std::thread thread_;
};

// The adapter of the USB device with this serial number; nothing while there is none.
std::optional<unsigned> findExported( const std::string &name, const Linux::Places & );

} // namespace Smbusd::Export
