// The host daemon of a replay: its traces are printed, its clock is turned by hand.
#pragma once

#include <functional>
#include <string>

namespace HandHost {

// A pointer that traces may hold: it is printed under this name from now on. All others are
// numbered in the order in which they appear, anew for every action: what lay on the stack or was
// released is another thing the next time.
void nameIs( const void *pointer, const std::string &name );
void forgetOtherPointers();
// The text with its pointers, as printf writes them, under their names.
std::string named( const std::string &text );

// Turns the clock on, and with it time(). Timers that are due run in their order; before each, and
// at the end, `passes` is told the milliseconds that have passed since it was told the last time.
void advance( unsigned milliseconds, const std::function<void( unsigned )> &passes );

} // namespace HandHost
