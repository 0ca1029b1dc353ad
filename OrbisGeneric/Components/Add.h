// What the pl_<type>_add functions have in common.
#pragma once

#include "OrbisGeneric/Components/Device.h"
#include "OrbisGeneric/Drivers/Drivers.h"
#include "OrbisGeneric/HostServices.h"

namespace Component {

// The driver object that json describes; null, with a trace, when there is none. Fills args.
inline DeviceBase *createDevice( const char *json, Drivers::DriverArgs &args ) {
   DeviceBase *device = DeviceBase::create( json, args );
   if ( !device )
      PL_TRACE( 0, "DeviceBase::create() failed" );
   return device;
}

// The object that the driver which json describes makes; null, with a trace, when it doesn't.
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

} // namespace Component
