#include "OrbisGeneric/Components/Add.h"

#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/HostServices.h"

namespace Component {

DeviceBase *createDevice( const char *json, Drivers::DriverArgs &args ) {
   DeviceBase *device = DeviceBase::create( json, args );
   if ( !device )
      PL_TRACE( 0, "DeviceBase::create() failed" );
   return device;
}

template <typename Object>
Object *addObject( const char *json, Object *( DeviceBase::*make )( const Drivers::DriverArgs & ),
                   const char *failure ) {
   Drivers::DriverArgs args;
   DeviceBase *device = createDevice( json, args );
   if ( !device )
      return nullptr;
   Object *object = ( device->*make )( args );
   if ( !object )
      PL_TRACE( 0, "%s", failure );
   return object;
}

template <typename Object>
using Make = Object *( DeviceBase::* )( const Drivers::DriverArgs & );

template LogicalDevice::Fan *addObject( const char *, Make<LogicalDevice::Fan>, const char * );
template LogicalDevice::Led *addObject( const char *, Make<LogicalDevice::Led>, const char * );
template LogicalDevice::Psu *addObject( const char *, Make<LogicalDevice::Psu>, const char * );
template LogicalDevice::Slot *addObject( const char *, Make<LogicalDevice::Slot>, const char * );

} // namespace Component
