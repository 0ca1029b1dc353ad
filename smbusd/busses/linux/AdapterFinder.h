// Which of this machine's adapters is meant.
#pragma once

#include "busses/linux/Adapter.h"

#include <string>
#include <variant>

namespace Smbusd::Linux {

// Where Linux shows its adapters; a test's own folders in tests.
struct Places {
   std::string sys = "/sys";
   std::string dev = "/dev";
};

struct AdapterNumber {
   unsigned number; // may change from boot to boot
   friend bool operator==( const AdapterNumber &, const AdapterNumber & ) = default;
};
struct AdapterName {
   std::string name; // all of it
   friend bool operator==( const AdapterName &, const AdapterName & ) = default;
};
struct AdapterPath {
   std::string path; // of the adapter in sysfs, or of a device with one adapter in it
   friend bool operator==( const AdapterPath &, const AdapterPath & ) = default;
};
using WantedAdapter = std::variant<AdapterNumber, AdapterName, AdapterPath>;

// Throws AdapterError: there is none, or there are several.
unsigned findAdapter( const WantedAdapter &, const Places & );

// What the kernel calls it; empty when it isn't there.
std::string adapterName( unsigned number, const Places & );

// "/dev/i2c-5 (SMBus I801 adapter at 0540)", for people.
std::string describeAdapter( unsigned number, const Places & );

} // namespace Smbusd::Linux
