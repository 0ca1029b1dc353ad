#pragma once

#include "host/State.h"

#include <string>
#include <vector>

namespace Host {

// A board as a table with a title line, then the grid of its cages. Each value is a line. An object
// without values is a line too.
std::vector<std::string> tableOf( const BoardReport &board );

// A value as text: "yes", "24.5", or "-" when there is no value.
std::string toText( const Scalar &value );

// The first `columns` characters of a line.
std::string clip( const std::string &line, size_t columns );

} // namespace Host
