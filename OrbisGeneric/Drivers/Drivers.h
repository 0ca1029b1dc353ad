// The table of drivers.
#pragma once

#include "OrbisGeneric/Drivers/DriverArgs.h"

#include <functional>
#include <map>
#include <string>

namespace Component {
class DeviceBase;
}
namespace Ham {
class Ham;
}

namespace Drivers {

using DriverFactory = std::function<Component::DeviceBase *( const DriverArgs &, Ham::Ham * )>;

// Factories by driver name. The table is filled when the library is loaded and does not change
// later. A factory returns an object that is not initialised yet.
extern std::map<std::string, DriverFactory> drivers;

} // namespace Drivers
