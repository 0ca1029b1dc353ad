// What the pl_<type>_add functions have in common.
#pragma once

#include "OrbisGeneric/Components/Device.h"

namespace Component {

// The driver object that json describes; null, with a trace, when it can't be made. Fills args.
DeviceBase *createDevice( const char *json, Drivers::DriverArgs &args );

// Creates the driver of json and asks it for an object. Null, with a trace, when one of the two
// can't be made. Add.cpp lists the kinds of objects.
template <typename Object>
Object *addObject( const char *json, Object *( DeviceBase::*make )( const Drivers::DriverArgs & ),
                   const char *failure );

} // namespace Component
