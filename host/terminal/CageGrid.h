#pragma once

#include "host/State.h"

#include <string>
#include <vector>

namespace Host {

// Whether the grid shows this object. The table shows all others.
bool isCage( const ObjectReport &object );

// What the marks mean.
inline constexpr auto cageLegend =
   "# present, . empty, ? unreadable, ~ stale; F tx fault, L rx loss, D tx disable; P low power, R "
   "reset, I interrupt";
// The presence of a module, a letter for each control line that is on, and whether that is old.
std::string marksOf( const ObjectReport &cage );
// The first fault of a cage, or an empty text.
std::string faultOf( const ObjectReport &cage );

// The transceiver cages of a board, several on a line: name, presence, and a letter for each
// control line that is on. Faults follow below. Empty when the board has no cages. With columns,
// longer lines are wrapped.
std::vector<std::string> gridOf( const BoardReport &board, size_t columns = 0 );

} // namespace Host
