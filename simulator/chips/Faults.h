#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>

namespace Simulator {

// The faults of a chip, as the bus sees them. At first there are none.
struct Faults {
   // Of every `outOf` transfers the chip does not acknowledge its address in the first `nacks`.
   unsigned nacks = 0;
   unsigned outOf = 1;
   bool badPec = false;                 // all bits of its packet error codes are inverted
   bool stuck = false;                  // it holds the data line low: no transfer on its bus works
   std::chrono::milliseconds slow{ 0 }; // clock stretching in each transfer
   std::optional<uint8_t> blockCount = {};     // the count that it sends for a block
   std::optional<unsigned> answerSize = {};    // bytes that a read returns, whatever its length
   std::map<uint32_t, uint8_t> corrupted = {}; // by register: bits to invert in its first byte

   bool any() const {
      return nacks || badPec || stuck || slow.count() || blockCount || answerSize ||
             !corrupted.empty();
   }
};

} // namespace Simulator
