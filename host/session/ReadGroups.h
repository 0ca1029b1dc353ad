#pragma once

#include "boardfiles/Board.h"

#include <vector>

namespace Host {

// Which objects are read by one command, as one number for each object: those of one driver object,
// of one chip, and of a composite with those of its parts. Each command wakes two processes, and
// what makes one of these objects wait would make all of them wait. All objects without values are
// read together: that takes no time.
std::vector<size_t> readGroups( const std::vector<BoardFiles::ObjectDescription> &objects );

} // namespace Host
