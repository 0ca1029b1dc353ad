// Finds an adapter of this machine.
#pragma once

#include "boardfiles/RoutesFile.h"
#include "smbusd/busses/linux/Adapter.h"

#include <string>

namespace Smbusd::Linux {

// Where Linux shows its adapters. Tests use their own folders.
struct Places {
   std::string sys = "/sys";
   std::string dev = "/dev";
};

// Throws AdapterError when none matches, or several.
unsigned findAdapter( const BoardFiles::WantedAdapter &, const Places & );

// The kernel's name for it; empty if it does not exist.
std::string adapterName( unsigned number, const Places & );

// "/dev/i2c-5 (SMBus I801 adapter at 0540)", for people.
std::string describeAdapter( unsigned number, const Places & );

} // namespace Smbusd::Linux
