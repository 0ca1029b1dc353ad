#pragma once

#include "host/State.h"

#include <string>
#include <vector>

namespace Host {

// Characters, as opposed to bytes, of a text in UTF-8.
size_t widthOf( const std::string &text );

// Whether an object is shown in the grid of cages, and not as lines of its own.
bool isCage( const ObjectReport &object );

// The transceiver cages of a board, several a line: a name, whether a module is there, and a
// letter for each control line that is on. Below them what is wrong. Nothing without cages.
std::vector<std::string> gridOf( const BoardReport &board );

} // namespace Host
