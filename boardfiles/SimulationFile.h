#pragma once

#include "boardfiles/Json.h"
#include "smbus/RootBusId.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace BoardFiles {

class TopologyFile;

// One chip of a simulated board.
struct SimulatedChip {
   uint32_t did = 0;
   Place didPlace{};
   std::optional<uint32_t> secondDid{}; // of a chip with a second address
   std::string name{};
   std::string kind{};
   bool present = true;
   Json settings{}; // the whole entry, with the keys of its kind
   Place place{};
};

// What can be pulled and inserted as one.
struct SimulatedModule {
   struct Set {
      std::string chip{};
      std::string quantity{};
      double in = 0;
      double out = 0;
      Place place{};
   };
   // Where a transceiver is plugged in.
   struct Cage {
      std::string chip{};
      std::string name{};
      Place place{};
   };
   std::string name{};
   bool present = true;
   std::vector<std::string> chips{};
   std::optional<Cage> cage{};
   std::vector<Set> sets{};
   Place place{};
};

// Joins two modules, which are named.
struct SimulatedFibre {
   std::string one{};
   std::string other{};
   double loss = 0; // dB
   Place place{};
};

// What isn't the usual about the wires of a root bus.
struct SimulatedWires {
   uint32_t clock = 0; // Hz
   Place place{};
};

// What the chips of a board hold.
struct SimulationFile {
   std::string path{};
   uint64_t seed = 0;
   std::vector<SimulatedChip> chips{};
   std::vector<SimulatedModule> modules{};
   std::vector<SimulatedFibre> fibres{};
   std::map<Bus::RootBusId, SimulatedWires> wires{};
   Place chipsPlace{};
};

// Reads the file and reports what its schema refuses and names that are there twice. Null when
// there is anything of that.
std::unique_ptr<const SimulationFile> readSimulation( const std::filesystem::path &path,
                                                      Findings &findings );

// Holds it against the wiring and against itself: chips that have no place or share one, a mux
// without a chip, a module of chips that aren't there, a quantity that no chip of that kind has,
// wires of a bus that isn't there.
void checkSimulation( const SimulationFile &simulation, const TopologyFile &topology,
                      Findings &findings );

} // namespace BoardFiles
