#pragma once

#include "host/State.h"

#include <string>
#include <vector>

namespace Host {

// A board as a table with a title line, then the grid of its cages. Each value is a line. An object
// without values is a line too. With columns no line is longer: faults then have lines of their
// own, and none is cut.
std::vector<std::string> tableOf( const BoardReport &board, size_t columns = 0 );

// A value as text: "yes", "24.5", or "-" when there is no value.
std::string toText( const Scalar &value );

} // namespace Host
