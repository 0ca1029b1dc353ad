#pragma once

#include "boardfiles/BusLoad.h"
#include "boardfiles/ChipPlaces.h"
#include "boardfiles/DriverTable.h"
#include "boardfiles/Finding.h"
#include "boardfiles/Kind.h"
#include "boardfiles/PanelFile.h"
#include "boardfiles/RegistersFile.h"
#include "boardfiles/SafeStateFile.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace BoardFiles {

// One object of a board, as the plug-in will be asked for it.
struct ObjectDescription {
   Kind kind{};
   std::string name{};
   std::string text{}; // the device document, or a topology label; empty for the system
   float alert = 0;    // degrees Celsius, of temperature sensors
   float critical = 0;
   uint8_t value = 0;              // of SMBus objects given by a label
   std::string second{};           // of modules: the label of their second address, or empty
   std::string reads{};            // of SMBus objects: "pmbus", the status of a supply; or empty
   std::optional<uint32_t> did{};  // of the driver object that it is made by
   std::string driver{};           // empty where a label names it
   unsigned address = 0;           // of its chip, seven bits
   double fullScale = 0;           // rpm, a fan's highest; 0 when that isn't known
   HealthKeys health{};            // with the limits of temperature sensors
   std::vector<ChipPlace> chips{}; // on its busses; none for the system

   // Whether there is anything to read. LEDs and most SMBus objects have operations alone.
   bool hasValues() const { return kind != Kind::Led && ( kind != Kind::Smbus || !reads.empty() ); }
};

// A board whose files are known to be good.
struct Board {
   std::string folder{};
   std::string topology{}; // the text of topology.json
   std::vector<ObjectDescription> objects{};
   std::vector<BoardRule> rules{};
   PluginTraces traces{};
   PluginServer server{};
   std::vector<BusLoad> busses{};
   ChipRegisters registers{};            // of registers.json, where there is one
   Panel panel{};                        // of panel.json, where there is one
   std::optional<SafeState> safeState{}; // of safe-state.json, where there is one
};

// The board without the modules in its cages, but for the one that is named so.
Board withoutModules( Board board, const std::string &but = "" );

// Reads topology.json and objects.json in `folder`, simulation.json, registers.json, panel.json and
// safe-state.json where there are such, and the plug-in's table of drivers, and reports all that is
// wrong with them. Nothing when there is an error; warnings leave the board as it is.
std::optional<Board> loadBoard( const std::filesystem::path &folder,
                                const std::filesystem::path &drivers, Findings &findings );

} // namespace BoardFiles
