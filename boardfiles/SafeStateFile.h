// What the server writes when nobody controls a board any more: safe-state.json.
#pragma once

#include "boardfiles/ChipPlaces.h"
#include "boardfiles/Finding.h"
#include "boardfiles/RegistersFile.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace BoardFiles {

struct SafeRegister {
   ChipPlace chip{};
   uint8_t number = 0;
   uint8_t value = 0;
   std::optional<uint8_t> mask{}; // only these bits; without one the whole register
   bool operator==( const SafeRegister & ) const = default;
};

struct SafeState {
   unsigned lease = 15; // seconds
   std::vector<SafeRegister> writes{};
};

// What the file is held against.
struct KnownChips {
   const ChipPlaces &places;
   const ChipRegisters &registers;
   std::map<uint32_t, std::string> drivers{}; // by did
};

// Reads the file and reports what its schema refuses, devices and registers that are not known,
// writes that would change bits of something else, and bits that are written twice.
SafeState readSafeState( const std::filesystem::path &path, const KnownChips &chips,
                         Findings &findings );

} // namespace BoardFiles
