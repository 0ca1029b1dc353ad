#pragma once

#include "boardfiles/DeviceDocument.h"
#include "smbus/RootBusId.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace BoardFiles {

struct TopologyDevice {
   uint32_t did = 0;
   std::string label{};                      // empty: none
   std::optional<uint8_t> address{};         // none: not on a bus
   std::optional<DeviceDocument> document{}; // where it has a driver
   std::vector<uint32_t> muxes{}; // dids of the muxes between the root bus and it, that one first
   Place place{};
};

struct TopologyMux;

struct TopologyBus {
   uint32_t id = 0;
   std::vector<TopologyDevice> devices{};
   std::vector<TopologyMux> muxes;
   Place place{};
   Place idPlace{};
};

struct TopologyMux {
   uint32_t did = 0; // of the chip, a device of the bus that the mux is on
   std::vector<TopologyBus> busses{};
   Place place{};
   Place didPlace{};
};

struct TopologyRoot {
   Bus::RootBusId id{};
   TopologyBus bus{};
};

// How the plug-in is to reach a medium's busses.
struct TopologyHam {
   std::string name{};
   Place place{};
};

// A board's wiring.
class TopologyFile {
 public:
   std::string path{};
   std::string text{}; // as it is in the file: this is what the plug-in gets
   std::vector<TopologyRoot> roots{};
   std::vector<TopologyHam> hams{};

   // Null when there is no such device, component or label.
   const TopologyDevice *byDid( uint32_t did ) const;
   const TopologyDevice *byUid( uint32_t uid ) const;
   const TopologyDevice *byLabel( std::string_view label ) const;
   const std::map<uint32_t, const TopologyDevice *> &devices() const { return devices_; }

 private:
   friend class TopologyReader;

   std::map<uint32_t, const TopologyDevice *> devices_; // by did
   std::map<uint32_t, uint32_t> didOfUid_;
   std::map<std::string, uint32_t, std::less<>> didOfLabel_;
};

// Reads the file and reports all that is wrong with it by itself: what its schema refuses, ids and
// labels that are there twice, numbers that a request has no room for, a mux whose chip isn't on
// its bus or is reached through the mux itself, a channel that isn't one. Null when the file can't
// be read as JSON; what the schema refuses is left out of the result.
std::unique_ptr<const TopologyFile> readTopology( const std::filesystem::path &path,
                                                  Findings &findings );

// Throws BoardError for a file with errors.
std::unique_ptr<const TopologyFile> loadTopology( const std::filesystem::path &path );

} // namespace BoardFiles
