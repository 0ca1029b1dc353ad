#pragma once

#include "boardfiles/DriverTable.h"
#include "boardfiles/Finding.h"

#include <rapidjson/document.h>

namespace BoardFiles {

// Checks the "driverArgs" of a device document (null when it has none) against what its driver
// takes whatever it makes, and what it wants for one kind of object.
void checkArguments( const rapidjson::Value *driverArgs, const DriverRule &driver,
                     const KindRule &kind, const Place &device, Findings &findings );

} // namespace BoardFiles
