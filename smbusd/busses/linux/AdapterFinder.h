// Which of this machine's adapters is meant.
#pragma once

#include "boardfiles/RoutesFile.h"
#include "smbusd/busses/linux/Adapter.h"

#include <string>

namespace Smbusd::Linux {

// Where Linux shows its adapters; a test's own folders in tests.
struct Places {
   std::string sys = "/sys";
   std::string dev = "/dev";
};

// Throws AdapterError: there is none, or there are several.
unsigned findAdapter( const BoardFiles::WantedAdapter &, const Places & );

// What the kernel calls it; empty when it isn't there.
std::string adapterName( unsigned number, const Places & );

// "/dev/i2c-5 (SMBus I801 adapter at 0540)", for people.
std::string describeAdapter( unsigned number, const Places & );

} // namespace Smbusd::Linux
