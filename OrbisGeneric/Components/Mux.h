// A multiplexer on the way to a device, set to the channel that leads there.
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
   // Queue, on this method, the request that connects the channel, or that disconnects all.
   virtual bool selectRequest( Ham::Ham *ham ) = 0;
   virtual bool resetRequest( Ham::Ham *ham ) = 0;
   // Connects the channel at once, through the mux chip's own access method.
   virtual pl_status executeMuxRequest() = 0;
   // The mux chip's driver object.
   virtual HardwareDevice *device() const = 0;
};

} // namespace LogicalDevice
} // namespace Component
