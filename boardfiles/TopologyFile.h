#pragma once

#include "smbus/RootBusId.h"

#include <optional>
#include <string>
#include <vector>

namespace BoardFiles {

// A board's wiring. Of each node the place in the file is kept, for messages.
struct TopologyDevice {
   uint32_t did = 0;
   std::optional<uint8_t> address; // none: not on a bus
   std::string place;
};

struct TopologyMux;

struct TopologyBus {
   uint32_t id = 0;
   std::vector<TopologyDevice> devices;
   std::vector<TopologyMux> muxes;
   std::string place;
};

struct TopologyMux {
   uint32_t did = 0; // of the chip, a device of the bus that the multiplexer is on
   std::vector<TopologyBus> busses;
   std::string place;
};

struct TopologyRoot {
   Bus::RootBusId id;
   TopologyBus bus;
};

struct TopologyFile {
   std::string path;
   std::vector<TopologyRoot> roots;
};

// Throws BoardError.
TopologyFile loadTopology( const std::string &path );

} // namespace BoardFiles
