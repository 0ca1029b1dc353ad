// Small helpers that drivers and the system object share. They serve fixed, known configurations:
// what is missing there stops the process.
#pragma once

#include "OrbisGeneric/Drivers/DriverArgs.h"

#include <string>

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

// A text with {keys} to fill in: the description line of a module (FDL) from its template.
// No escape for a brace, no default for a key. A pass runs from start() to charPtr(); setting or
// reading outside one, or setting a key that is not there, is an assertion failure.
class FormatFdl {
 public:
   explicit FormatFdl( std::string format ) : template_( std::move( format ) ) {}

   void start();
   // Replaces the first {key} in the text, and only that: a key that stands twice wants two calls,
   // and a value that holds a braced key can be filled by a later call. Returns true.
   bool set( std::string key, std::string value );
   // The filled text, valid until the next start(); keys that were never set stand in it.
   const char *charPtr();

 private:
   bool active_ = false;
   std::string text_;
   std::string template_;
};

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
