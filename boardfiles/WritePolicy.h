// Who may write raw to which registers: a policy file.
#pragma once

#include "boardfiles/Finding.h"
#include "smbus/RootBusId.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace BoardFiles {

struct WritableRegisters {
   uint32_t first = 0;
   uint32_t last = 0;
   unsigned bytes = 1; // the most data that one write may carry
};

// Either a user or the members of a group may write so to a chip.
struct WriteRow {
   std::string user{};
   std::string group{};
   Bus::RootBusId bus{};
   std::string path{}; // the multiplexers before the chip, "0x70=1 0x71=4"; or empty
   uint8_t address = 0;
   std::vector<WritableRegisters> registers{};
   std::string reason{};
   Place place{};
};

// "user alice: 0x48 behind 0x70=1 on scd(4):1:2, registers 0x02 to 0x03, 2 bytes: REASON".
std::string toText( const WriteRow &row );

struct WritePolicy {
   std::string file{};
   std::vector<WriteRow> rows{};
};

// Throws BoardError: not as boards/writes.schema.json has it, not a bus, not multiplexers, a
// range whose end is before its beginning.
WritePolicy loadWritePolicy( const std::filesystem::path &path );

} // namespace BoardFiles
