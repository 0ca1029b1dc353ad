#pragma once

#include "Clock.h"
#include "board/SimulationFile.h"
#include "chips/Chip.h"

#include <memory>

namespace Smbusd {

// A chip as its entry describes it. The clock outlives it. Throws BoardError for a kind that
// nobody has written.
std::unique_ptr<Chip> makeChip( const SimulatedChipEntry &, uint64_t seed, const Clock & );

} // namespace Smbusd
