// Small helpers that drivers share.
#pragma once

#include "OrbisGeneric/Drivers/Drivers.h"

namespace Topology {
struct Device;
}

namespace Drivers {

// The argument record of a topology device. One that the topology names no driver for gets a record
// of its own: its device id, no component, address 0, no driver.
DriverArgs &argumentsOf( Topology::Device &device );

} // namespace Drivers
