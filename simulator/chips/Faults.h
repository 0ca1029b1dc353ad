#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>

namespace Simulator {

// What the bench has broken about a chip, as the bus notices it. Nothing, when it is made.
struct Faults {
   // Of every `outOf` transfers the chip does not acknowledge its address in the first `nacks`.
   unsigned nacks = 0;
   unsigned outOf = 1;
   bool badPec = false; // its packet error codes have all bits turned over
   bool stuck = false;  // it holds the data line low: nothing gets through on its bus
   std::chrono::milliseconds slow{ 0 };        // by which it stretches the clock in each transfer
   std::optional<uint8_t> blockCount = {};     // what it says for the count of a block
   std::optional<unsigned> answerSize = {};    // how many bytes come back, whatever was asked for
   std::map<uint32_t, uint8_t> corrupted = {}; // by register: bits turned over in its first byte

   bool any() const {
      return nacks || badPec || stuck || slow.count() || blockCount || answerSize ||
             !corrupted.empty();
   }
};

} // namespace Simulator
