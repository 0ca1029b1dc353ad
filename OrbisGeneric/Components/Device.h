// Driver objects. Each topology device has one. It is made from a device-argument document, and all
// objects that the host adds for the device share it.
#pragma once

#include "pl.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace Drivers {
struct DriverArgs;
}
namespace Ham {
class Ham;
}

namespace Component {

namespace LogicalDevice {
class Fan;
class Gpio;
class Led;
class Mux;
class Psu;
class QsfpXcvr;
class SfpXcvr;
class Slot;
class SmbusProxy;
class TempSensor;
} // namespace LogicalDevice

// The objects that a driver can make. A driver object is never deleted.
class DeviceBase {
 public:
   // Runs once, after the factory and before the object is added to `devices`.
   virtual void init() {}

   // Each makes a new object. Null when an argument is missing. An object that the driver does not
   // support throws NotImplementedException.
   virtual LogicalDevice::TempSensor *newTempSensor( const Drivers::DriverArgs &args );
   virtual LogicalDevice::Slot *newSlot( const Drivers::DriverArgs &args );
   virtual LogicalDevice::SfpXcvr *newSfpXcvr( unsigned int id, const Drivers::DriverArgs &args );
   virtual LogicalDevice::QsfpXcvr *newQsfpXcvr( unsigned int id, const Drivers::DriverArgs &args );
   virtual LogicalDevice::Led *newLed( const Drivers::DriverArgs &args );
   virtual LogicalDevice::Fan *newFan( const Drivers::DriverArgs &args );
   virtual LogicalDevice::Mux *newMux( const Drivers::DriverArgs &args, unsigned int channel );
   virtual LogicalDevice::Psu *newPsu( const Drivers::DriverArgs &args );
   virtual LogicalDevice::SmbusProxy *newSmbusProxy( const Drivers::DriverArgs &args );

   // Driver objects by device id. Entries are never removed.
   static std::map<uint32_t, DeviceBase *> devices;

   // Fills args from the document, then finds or makes the driver object. An object that is there
   // already may be of another driver or kind. Null, with a trace, on a failure. json must outlive
   // args.
   static DeviceBase *create( const char *json, Drivers::DriverArgs &args );
   // Compares only the device id, not the driver name.
   static DeviceBase *findDevice( Drivers::DriverArgs &args );
   static DeviceBase *callDriverFactoryFunc( Drivers::DriverArgs &args, Ham::Ham *ham );

   void *driverData_ = nullptr; // for the driver to use; null by default
};

// A driver of one chip.
class HardwareDevice : public DeviceBase {
 public:
   virtual ~HardwareDevice() = default;
   // One bit of one register of this device. Every hardware device supports it.
   virtual LogicalDevice::Gpio *newGpio( const Drivers::DriverArgs &args );

   // Finds or makes the driver object. When ham is null, a Ham is made from the topology. An
   // assertion fails when the object is a composite.
   static HardwareDevice *create( Drivers::DriverArgs &args, Ham::Ham *ham );
   // Makes and registers it.
   static HardwareDevice *make( Drivers::DriverArgs &args, Ham::Ham *ham );

   Ham::Ham *ham_ = nullptr; // set by create
};

// A device that consists of sub-devices. Each is added by the pl_<type>_add of its kind.
class MultiDevice : public DeviceBase {
 public:
   virtual ~MultiDevice() = default;

   // As those of HardwareDevice. An assertion fails when the object is a single device.
   static MultiDevice *create( Drivers::DriverArgs &args );
   static MultiDevice *make( Drivers::DriverArgs &args );

   void deviceDriverArgsIs( std::map<std::string, std::string> args );
   // The document stored under key, or null with a trace. Valid while the map is unchanged.
   const char *getDeviceDriverArg( std::string key );

   // Each adds the sub-device that key describes. Null when there is no such key.
   pl_slot *addSlot( std::string key );
   pl_led *addLed( std::string key );
   pl_psu *addPsu( std::string key );
   pl_fan *addFan( std::string key );

   std::vector<pl_slot *> slots_;
   std::vector<pl_led *> leds_;
   std::vector<pl_psu *> psus_;
   std::vector<pl_fan *> fans_;
   std::map<std::string, std::string> deviceDriverArgs;
};

} // namespace Component
