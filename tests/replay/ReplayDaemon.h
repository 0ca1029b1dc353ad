// The platform daemon of a replay, as the plug-in sees it: prints traces, and has a clock that
// the replay moves.
#pragma once

#include <functional>
#include <string>

namespace ReplayDaemon {

// Traces may contain this pointer: it is printed under the name from now on. All other pointers are
// numbered in the order in which they appear. The numbers start again with every action, because an
// address on the stack or on the heap may belong to something else by then.
void nameIs( const void *pointer, const std::string &name );
void forgetOtherPointers();
// Replaces the pointers in a text, as printf writes them, by their names.
std::string named( const std::string &text );

// Moves the clock forward, and time() with it. Timers that are due run in order; before each of
// them, and at the end, `passes` gets the milliseconds since its last call.
void advance( unsigned milliseconds, const std::function<void( unsigned )> &passes );

} // namespace ReplayDaemon
