#ifndef ORBIS_HOST_CHECK_ARGUMENTCHECK_H
#define ORBIS_HOST_CHECK_ARGUMENTCHECK_H

#include "check/DriverTable.h"
#include "check/Finding.h"

#include <rapidjson/document.h>

namespace Host {

/// Checks the "driverArgs" of a device document (null when it has none) against what its driver
/// takes whatever it makes, and what it wants for one kind of object.
void checkArguments( const rapidjson::Value *driverArgs, const DriverRule &driver,
                     const KindRule &kind, const Place &device, Findings &findings );

} // namespace Host

#endif
