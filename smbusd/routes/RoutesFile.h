#pragma once

#include "RootBusId.h"
#include "board/JsonFile.h"
#include "busses/linux/AdapterFinder.h"
#include "busses/linux/LinuxBus.h"

#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace Smbusd {

struct SimulatedRoute {};
struct AdapterRoute {
   Linux::WantedAdapter adapter;
   std::map<uint8_t, Linux::ChipRules> chips; // by address
};
struct PortsRoute {
   uint32_t base;
   uint32_t size;
};

// What carries one root bus.
struct Route {
   RootBusId bus;
   std::variant<SimulatedRoute, AdapterRoute, PortsRoute> to;
   bool optional; // the server starts without it
   JsonPlace place;
};

struct RoutesFile {
   JsonFile file;
   std::vector<Route> routes;
};

// Throws BoardError: not as boards/routes.schema.json has it, no bus, a bus that has a route
// already, an address told of twice, or two busses on one adapter or one port.
std::unique_ptr<const RoutesFile> loadRoutes( const std::string &path );

} // namespace Smbusd
