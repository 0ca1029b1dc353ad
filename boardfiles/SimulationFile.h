#pragma once

#include "boardfiles/JsonFile.h"

#include <memory>
#include <string>
#include <vector>

namespace BoardFiles {

// One chip of a simulated board, its kind's own keys still in the file's value.
struct SimulatedChipEntry {
   uint32_t did = 0;
   std::string name;
   std::string kind;
   bool present = true;
   JsonPlace place;
};

// What can be pulled and inserted as one.
struct ModuleEntry {
   struct Set {
      std::string chip;
      std::string quantity;
      double in = 0;
      double out = 0;
      JsonPlace place;
   };
   std::string name;
   bool present = true;
   std::vector<std::string> chips;
   std::vector<Set> sets;
   JsonPlace place;
};

// What the chips of a board hold, checked against boards/simulation.schema.json.
struct SimulationFile {
   JsonFile file;
   uint64_t seed = 0;
   std::vector<SimulatedChipEntry> chips; // their places are in the file above
   std::vector<ModuleEntry> modules;
};

// Throws BoardError: besides what the schema finds, a name that is used twice.
std::unique_ptr<const SimulationFile> loadSimulation( const std::string &path );

} // namespace BoardFiles
