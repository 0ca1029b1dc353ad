#pragma once

#include "boardfiles/SimulationFile.h"
#include "simulator/chips/Chip.h"
#include "smbus/Clock.h"

#include <functional>
#include <memory>

namespace Simulator {

// What a chip finds on the board; all of it outlives the chip.
struct Surroundings {
   const Bus::Clock &clock;
   uint64_t seed = 0;
   uint8_t address = 0;
   std::function<void()> powerCycle;
   std::function<void()> powerOff;
};

// A chip as its entry describes it. Throws BoardError for a kind that nobody has written, and for
// texts that the chip has no room for.
std::unique_ptr<Chip> makeChip( const BoardFiles::SimulatedChipEntry &, const Surroundings & );

} // namespace Simulator
