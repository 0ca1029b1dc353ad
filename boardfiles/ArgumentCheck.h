#pragma once

#include "boardfiles/DeviceDocument.h"
#include "boardfiles/DriverTable.h"

namespace BoardFiles {

// Checks the "driverArgs" of a device document against what its driver takes whatever it makes, and
// what it needs for one kind of object.
void checkArguments( const DeviceDocument &device, const DriverRule &driver, const KindRule &kind,
                     Findings &findings );

} // namespace BoardFiles
