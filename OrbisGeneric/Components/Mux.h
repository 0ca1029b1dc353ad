// A mux on the path to a device, and the channel that leads to the device.
#pragma once

#include "pl.h"

namespace Ham {
class Ham;
}

namespace Component {

class HardwareDevice;

namespace LogicalDevice {

class Mux {
 public:
   virtual ~Mux() = default;
   // Queue on ham the request that connects the channel, or that disconnects all channels.
   virtual bool selectRequest( Ham::Ham *ham ) = 0;
   virtual bool resetRequest( Ham::Ham *ham ) = 0;
   // Connects the channel now, with the Ham of the mux chip.
   virtual pl_status executeMuxRequest() = 0;
   // The driver object of the mux chip.
   virtual HardwareDevice *device() const = 0;
};

} // namespace LogicalDevice
} // namespace Component
