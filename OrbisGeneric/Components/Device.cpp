#include "OrbisGeneric/Components/Device.h"

#include "OrbisGeneric/Assert.h"
#include "OrbisGeneric/Components/Gpio.h"
#include "OrbisGeneric/Components/NotImplementedException.h"
#include "OrbisGeneric/Drivers/Drivers.h"
#include "OrbisGeneric/Ham/Ham.h"
#include "OrbisGeneric/HostServices.h"

namespace Component {

std::map<uint32_t, DeviceBase *> DeviceBase::devices;

LogicalDevice::TempSensor *DeviceBase::newTempSensor( const Drivers::DriverArgs & ) {
   throw NotImplementedException( "newTempSensor" );
}
LogicalDevice::Slot *DeviceBase::newSlot( const Drivers::DriverArgs & ) {
   throw NotImplementedException( "newSlot" );
}
LogicalDevice::SfpXcvr *DeviceBase::newSfpXcvr( unsigned int, const Drivers::DriverArgs & ) {
   throw NotImplementedException( "newSfpXcvr" );
}
LogicalDevice::QsfpXcvr *DeviceBase::newQsfpXcvr( unsigned int, const Drivers::DriverArgs & ) {
   throw NotImplementedException( "newQsfpXcvr" );
}
LogicalDevice::Led *DeviceBase::newLed( const Drivers::DriverArgs & ) {
   throw NotImplementedException( "newLed" );
}
LogicalDevice::Fan *DeviceBase::newFan( const Drivers::DriverArgs & ) {
   throw NotImplementedException( "newFan" );
}
LogicalDevice::Mux *DeviceBase::newMux( const Drivers::DriverArgs &, unsigned int ) {
   throw NotImplementedException( "newMux" );
}
LogicalDevice::Psu *DeviceBase::newPsu( const Drivers::DriverArgs & ) {
   throw NotImplementedException( "newPsu" );
}
LogicalDevice::SmbusProxy *DeviceBase::newSmbusProxy( const Drivers::DriverArgs & ) {
   throw NotImplementedException( "newSmbusProxy" );
}

DeviceBase *DeviceBase::create( const char *json, Drivers::DriverArgs &args ) {
   PL_TRACE( 0, "parsing devArgs = %s", json );
   if ( !args.parseJSON( json ) ) {
      PL_TRACE( 0, "failed to parse json object as a device" );
      return nullptr;
   }
   if ( auto *known = findDevice( args ) )
      return known;
   if ( args.isMultiDevice )
      return MultiDevice::make( args );
   return HardwareDevice::make( args, nullptr );
}

DeviceBase *DeviceBase::findDevice( Drivers::DriverArgs &args ) {
   PL_TRACE( 0, "looking for already existing device %u", args.did );
   auto entry = devices.find( args.did );
   if ( entry == devices.end() )
      return nullptr;
   PL_TRACE( 0, "using previously instanciated HardwareDevice %s", args.driver.c_str() );
   return entry->second;
}

DeviceBase *DeviceBase::callDriverFactoryFunc( Drivers::DriverArgs &args, Ham::Ham *ham ) {
   PL_TRACE( 0, "creating HardwareDevice %s", args.driver.c_str() );
   auto entry = Drivers::drivers.find( args.driver );
   if ( entry == Drivers::drivers.end() ) {
      PL_TRACE( 0, "driver %s not found", args.driver.c_str() );
      return nullptr;
   }
   PL_TRACE( 0, "calling factory function for %s", args.driver.c_str() );
   return entry->second( args, ham );
}

namespace {

// Neither the registry nor a factory says of which kind an object is. The kind is checked only
// where it is needed.
template <typename Kind>
Kind *as( DeviceBase *object ) {
   auto *device = dynamic_cast<Kind *>( object );
   assert( device && "The device is of the other kind: see isMultiDevice" );
   return device;
}

} // namespace

LogicalDevice::Gpio *HardwareDevice::newGpio( const Drivers::DriverArgs &args ) {
   return new LogicalDevice::RegGpio( this, args );
}

HardwareDevice *HardwareDevice::create( Drivers::DriverArgs &args, Ham::Ham *ham ) {
   DeviceBase *const known = findDevice( args );
   return known ? as<HardwareDevice>( known ) : make( args, ham );
}

HardwareDevice *HardwareDevice::make( Drivers::DriverArgs &args, Ham::Ham *ham ) {
   if ( !ham ) {
      PL_TRACE( 0, "creating Ham" );
      ham = Ham::createHam( args );
      if ( !ham ) {
         PL_TRACE( 0, "failed to create Ham" );
         return nullptr;
      }
   }
   DeviceBase *const made = callDriverFactoryFunc( args, ham );
   if ( !made ) {
      PL_TRACE( 0, "factory function returned a null object" );
      return nullptr; // the Ham is not deleted: its maker may still use it
   }
   auto *device = as<HardwareDevice>( made );
   device->ham_ = ham;
   device->init();
   PL_TRACE( 0, "%s device created", args.driver.c_str() );
   devices[args.did] = device;
   return device;
}

MultiDevice *MultiDevice::create( Drivers::DriverArgs &args ) {
   DeviceBase *const known = findDevice( args );
   return known ? as<MultiDevice>( known ) : make( args );
}

MultiDevice *MultiDevice::make( Drivers::DriverArgs &args ) {
   DeviceBase *const made = callDriverFactoryFunc( args, nullptr );
   if ( !made ) {
      PL_TRACE( 0, "factory function returned a null object" );
      return nullptr;
   }
   auto *device = as<MultiDevice>( made );
   device->deviceDriverArgsIs( args.multiDeviceArgs );
   device->init();
   PL_TRACE( 0, "%s MultiDevice created", args.driver.c_str() );
   devices[args.did] = device;
   return device;
}

void MultiDevice::deviceDriverArgsIs( std::map<std::string, std::string> args ) {
   deviceDriverArgs = std::move( args );
}

const char *MultiDevice::getDeviceDriverArg( std::string key ) {
   auto entry = deviceDriverArgs.find( key );
   if ( entry == deviceDriverArgs.end() ) {
      PL_TRACE( 0, "Failed to find driverArgs for driver key '%s'", key.c_str() );
      return nullptr;
   }
   return entry->second.c_str();
}

namespace {

// Adds the record to the list even when it is null.
template <typename Record>
Record *addSubDevice( const char *json, Record *( *add )( const char * ),
                      std::vector<Record *> &records ) {
   if ( !json )
      return nullptr;
   return records.emplace_back( add( json ) );
}

} // namespace

pl_slot *MultiDevice::addSlot( std::string key ) {
   return addSubDevice( getDeviceDriverArg( key ), pl_slot_add, slots_ );
}

pl_led *MultiDevice::addLed( std::string key ) {
   return addSubDevice( getDeviceDriverArg( key ), pl_led_add, leds_ );
}

pl_psu *MultiDevice::addPsu( std::string key ) {
   return addSubDevice( getDeviceDriverArg( key ), pl_psu_add, psus_ );
}

pl_fan *MultiDevice::addFan( std::string key ) {
   return addSubDevice( getDeviceDriverArg( key ), pl_fan_add, fans_ );
}

} // namespace Component
