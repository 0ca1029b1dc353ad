#pragma once

#include "boardfiles/Finding.h"
#include "smbus/RootBusId.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace BoardFiles {

// How a route names a Linux adapter.
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

// What isn't the usual about one address of an adapter.
struct ChipRules {
   unsigned offsetBytes = 0; // of its registers on the wires; 0: as the client says
   bool force = false;       // used although a kernel driver holds it
};

struct SimulatedRoute {};
struct AdapterRoute {
   WantedAdapter adapter;
   std::map<uint8_t, ChipRules> chips; // by address
};
struct PortsRoute {
   uint32_t base;
   uint32_t size;
};

// What carries one root bus.
struct Route {
   Bus::RootBusId bus;
   std::variant<SimulatedRoute, AdapterRoute, PortsRoute> to;
   bool optional;                 // the server starts without it
   std::optional<uint32_t> clock; // of its wires, in Hz
   std::vector<uint8_t> muxes;    // addresses of multiplexers, on the bus or behind others
   Place place;
};

struct RoutesFile {
   std::vector<Route> routes;
};

// Throws BoardError: not as boards/routes.schema.json has it, not a bus, two routes of one bus, two
// entries of one address, or two busses on one adapter or one port.
RoutesFile loadRoutes( const std::filesystem::path &path );

} // namespace BoardFiles
