#pragma once

#include "host/State.h"

#include <string>
#include <vector>

namespace Host {

// The number of characters, not bytes, of a UTF-8 text.
size_t widthOf( const std::string &text );

// Whether the grid shows this object. The table shows all others.
bool isCage( const ObjectReport &object );

// The transceiver cages of a board, several on a line: name, presence, and a letter for each
// control line that is on. Faults follow below. Empty when the board has no cages.
std::vector<std::string> gridOf( const BoardReport &board );

} // namespace Host
