// Driver objects: one for each topology device, made from device-argument documents and shared by
// all objects that the host adds on it.
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

// What every driver can be asked to make. A driver object lives as long as the process.
class DeviceBase {
 public:
   // Runs once, after the factory and before the object is registered.
   virtual void init() {}

   // Each makes a new object; null when the arguments lack something. What a driver does not
   // provide throws NotImplementedException.
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

   // Fills args from the document and finds or makes its driver object; null, with a trace, when
   // that fails. json must outlive args.
   static DeviceBase *create( const char *json, Drivers::DriverArgs &args );
   // The device id alone decides: the driver that made the object isn't compared.
   static DeviceBase *findDevice( Drivers::DriverArgs &args );
   static DeviceBase *callDriverFactoryFunc( Drivers::DriverArgs &args, Ham::Ham *ham );

   void *driverData_ = nullptr; // a driver's own; null unless it says otherwise
};

// A driver of one chip.
class HardwareDevice : public DeviceBase {
 public:
   virtual ~HardwareDevice() = default;
   // One bit of one register of this device; every hardware device makes these.
   virtual LogicalDevice::Gpio *newGpio( const Drivers::DriverArgs &args );

   // Finds or makes the driver object; without a ham one is made from the topology.
   static HardwareDevice *create( Drivers::DriverArgs &args, Ham::Ham *ham );

   Ham::Ham *ham_ = nullptr; // bound by create
};

// A composite of sub-devices, each added through the exported entry point of its kind.
class MultiDevice : public DeviceBase {
 public:
   virtual ~MultiDevice() = default;

   static MultiDevice *create( Drivers::DriverArgs &args );

   void deviceDriverArgsIs( std::map<std::string, std::string> args );
   // The document stored under key, valid while the map is unchanged; null, with a trace, if none.
   const char *getDeviceDriverArg( std::string key );

   // Each adds the sub-device that key describes; null when there is no such key.
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
