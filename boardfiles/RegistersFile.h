// The registers of a board's chips by their names: registers.json.
#pragma once

#include "boardfiles/DriverTable.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace BoardFiles {

struct ChipRegister {
   uint8_t number = 0;
   unsigned bytes = 1; // 1 or 2
   std::string name{};
   bool highByteFirst = false; // of two bytes
   bool isFree = false;        // reading it changes nothing
   bool isWhole = false;       // all its bits are one setting
   bool operator==( const ChipRegister & ) const = default;
};

// By the driver of the objects that are made of the chip.
using ChipRegisters = std::map<std::string, std::vector<ChipRegister>, std::less<>>;

// Reads the file and reports what its schema refuses, drivers that the plug-in doesn't have, and
// registers that are there twice.
ChipRegisters readRegisters( const std::filesystem::path &path, const DriverTable &drivers,
                             Findings &findings );

} // namespace BoardFiles
