#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Health {

// Why a transfer failed.
enum class BusFault { NoAcknowledge, Pec, Timeout, HeldLow, Other };

// What the server knows of one address behind one row of selections.
struct ChipEvidence {
   std::string path{}; // the selections before it, the outermost first: "0x70=1 0x71=4"; or empty
   unsigned address = 0;
   uint64_t transfers = 0;
   uint64_t failuresInARow = 0;             // since its last good transfer
   BusFault last = BusFault::NoAcknowledge; // of these failures
};

// A segment that the server leaves alone for a while: a line is held there, or nothing that goes
// through it ends in time.
struct QuarantinedSegment {
   std::string path{};
   bool isWholeBus = false; // its multiplexer can't be released, or it is the bus itself
};

// What the server knows of one root bus.
struct BusEvidence {
   std::string bus{}; // "scd(4):1:2"
   std::vector<ChipEvidence> chips{};
   // A line of the bus is held, or its transfers run out of time, and none was good since. Then the
   // path is that of the first one that failed so.
   bool isHeld = false;
   std::string heldPath{};
   std::vector<QuarantinedSegment> quarantined{};
};

using Evidence = std::vector<BusEvidence>;

} // namespace Health
