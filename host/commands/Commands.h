#pragma once

#include "boardfiles/Board.h"
#include "host/State.h"
#include "host/commands/CommandLine.h"

#include <chrono>

namespace Host {

// How long a command that ends by itself waits: for the plug-in to come up, and in all.
constexpr auto initLimit = std::chrono::seconds( 5 );
constexpr auto totalLimit = std::chrono::seconds( 30 );

// Each carries one sub-command out and returns the program's exit code.
int show( const BoardFiles::Board &board, const Options &options );
int watch( const BoardFiles::Board &board, const Options &options );
int serve( const BoardFiles::Board &board, const Options &options );
int act( const BoardFiles::Board &board, const Options &options );

// Says that the plug-in can't be loaded; the exit code for that.
int tellLoadFault( const Fault &fault );

} // namespace Host
