// Small helpers for the drivers and the system object. They work on fixed configurations: an
// assertion fails when something is missing there.
#pragma once

#include "OrbisGeneric/Drivers/DriverArgs.h"

#include <string>

namespace Component {
class HardwareDevice;
namespace LogicalDevice {
class Gpio;
}
} // namespace Component

namespace Drivers {

// Makes the description line of a module (FDL) from a template with {keys}. Braces can't be escaped
// and keys have no default. The order is start(), set() for each key, charPtr(). An assertion fails
// on another order, and when the text has no such key.
class FormatFdl {
 public:
   explicit FormatFdl( std::string format ) : template_( std::move( format ) ) {}

   void start();
   // Replaces only the first {key} in the text. A key that is there twice needs two calls. A value
   // may contain a {key}; a later call replaces it. Returns true.
   bool set( std::string key, std::string value );
   // The filled text, valid until the next start(). It still contains the keys that were not set.
   const char *charPtr();

 private:
   bool active_ = false;
   std::string text_;
   std::string template_;
};

// Removes leading and trailing spaces and tabs, but no other white space.
std::string trim( std::string s );

// The driver object of the topology device with this label. `driver` is used when the topology
// names no driver for the device.
Component::HardwareDevice *getHardwareDeviceByLabel( const char *label, std::string driver );

// A new GPIO for bit bitpos of register reg. A device given by its label gets the "Dummy" driver
// when the topology names no driver for it.
Component::LogicalDevice::Gpio *getRegGpioForDevice( Component::HardwareDevice *device,
                                                     unsigned int reg, unsigned int bitpos );
Component::LogicalDevice::Gpio *getRegGpioForDevice( const char *label, unsigned int reg,
                                                     unsigned int bitpos );

} // namespace Drivers
