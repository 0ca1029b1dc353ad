// Small helpers that drivers and the system object share. They serve fixed, known configurations:
// what is missing there stops the process.
#pragma once

#include "OrbisGeneric/Drivers/Drivers.h"

namespace Component {
class HardwareDevice;
namespace LogicalDevice {
class Gpio;
}
} // namespace Component
namespace Topology {
struct Device;
}

namespace Drivers {

// s without leading and trailing spaces and tabs; other white space stays.
std::string trim( std::string s );

// The argument record of a topology device. One that the topology names no driver for gets a record
// of its own: its device id, no component, address 0, no driver.
DriverArgs &argumentsOf( Topology::Device &device );

// The driver object of the topology device that carries label, made with `driver` unless the
// topology names one.
Component::HardwareDevice *getHardwareDeviceByLabel( const char *label, std::string driver );

// A new one-bit GPIO on bit bitpos of register reg. On a device by label, which gets the "Dummy"
// driver unless the topology names one.
Component::LogicalDevice::Gpio *getRegGpioForDevice( Component::HardwareDevice *device,
                                                     unsigned int reg, unsigned int bitpos );
Component::LogicalDevice::Gpio *getRegGpioForDevice( const char *label, unsigned int reg,
                                                     unsigned int bitpos );

} // namespace Drivers
