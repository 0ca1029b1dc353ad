#pragma once

#include "host/State.h"

#include <string>
#include <vector>

namespace Host {

// A board as lines of aligned columns, the first line their titles: one line for each value, and
// one for each object that has none; then the grid of its cages.
std::vector<std::string> tableOf( const BoardReport &board );

// A value as people read it: "yes", "24.5"; "-" for nothing.
std::string toText( const Scalar &value );

// A line's first `columns` characters.
std::string clip( const std::string &line, size_t columns );

} // namespace Host
