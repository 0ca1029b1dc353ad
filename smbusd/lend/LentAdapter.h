#pragma once

#include "busses/linux/AdapterFinder.h"
#include "lend/TinyUsb.h"
#include "lend/VhciPort.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace Smbusd::Lend {

// A simulated bus that this machine's kernel has as an adapter, so that its drivers and all
// programs for i2c work on the simulated chips. Ends with the object.
class LentAdapter {
 public:
   // The name becomes the USB device's serial number. Throws LendError.
   LentAdapter( std::unique_ptr<SimulatedBus> bus, const std::string &name );
   ~LentAdapter();

   // The number of the adapter that the kernel's driver has made of it; waits for that. Nothing
   // when none has come by then.
   std::optional<unsigned> adapter( std::chrono::milliseconds patience ) const;

 private:
   void serve();

   const std::unique_ptr<SimulatedBus> bus_;
   const std::string name_;
   TinyUsb device_;
   VhciPort port_;
   std::thread thread_;
};

// The adapter of the USB device with this serial number; nothing while there is none.
std::optional<unsigned> findLent( const std::string &name, const Linux::Places & );

} // namespace Smbusd::Lend
