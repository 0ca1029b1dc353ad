#pragma once

#include "smbus/Clock.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>

namespace Simulator {

// Whether a chip holds the data line low, so that no transfer on its bus works, and until when.
enum class Stuck { No, ForEver, UntilClocks, UntilReset }; // nine clocks; a multiplexer before it

// The faults of a chip, as the bus sees them. At first there are none.
struct Faults {
   // Of every `outOf` transfers the chip does not acknowledge its address in the first `nacks`.
   unsigned nacks = 0;
   unsigned outOf = 1;
   bool badPec = false; // all bits of its packet error codes are inverted
   Stuck stuck = Stuck::No;
   std::chrono::milliseconds slow{ 0 };        // clock stretching in each transfer
   std::optional<uint8_t> blockCount = {};     // the count that it sends for a block
   std::optional<unsigned> answerSize = {};    // bytes that a read returns, whatever its length
   std::map<uint32_t, uint8_t> corrupted = {}; // by register: bits to invert in its first byte
   bool allOnes = false;                       // each byte that it sends is 0xFF
   // Only of transceiver modules:
   bool badChecksum = false;              // all bits of its checksums are inverted
   Bus::Clock::Time busyUntil{ 0 };       // until then it does not acknowledge
   std::optional<uint8_t> stuckPage = {}; // it shows this page, and says so
   std::optional<uint8_t> wrongPage = {}; // it shows this page, and says that it's the chosen one

   bool any() const {
      return nacks || badPec || stuck != Stuck::No || slow.count() || blockCount || answerSize ||
             !corrupted.empty() || allOnes || badChecksum || busyUntil.count() || stuckPage ||
             wrongPage;
   }
};

} // namespace Simulator
