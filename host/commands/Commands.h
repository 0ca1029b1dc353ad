#pragma once

#include "boardfiles/Board.h"
#include "host/State.h"
#include "host/commands/CommandLine.h"
#include "host/session/Session.h"

#include <chrono>
#include <functional>

namespace Host {

// The longest time of a command that ends by itself: for an init of the plug-in, and in all.
constexpr auto initLimit = std::chrono::seconds( 5 );
constexpr auto totalLimit = std::chrono::seconds( 30 );

// Each runs one command and returns the exit code.
int check( const Options &options );
int show( const BoardFiles::Board &board, const Options &options );
int why( const BoardFiles::Board &board, const Options &options );
int watch( const BoardFiles::Board &board, const Options &options );
int health( const BoardFiles::Board &board, const Options &options );
int module( const BoardFiles::Board &board, const Options &options );
int modules( const BoardFiles::Board &board, const Options &options );
int moduleOfFile( const Options &options );
int serve( const BoardFiles::Board &board, const Options &options );
int events( const Options &options );
int acknowledge( const Options &options );
int act( const BoardFiles::Board &board, const Options &options );

// The file of the board's journal.
std::filesystem::path eventsOf( const Options &options );

// Sets up spdlog. All its output goes to standard error.
void setUpLog( const Options &options );

// Handlers for a session: they log its traces and notices, and call `changed`.
Session::Handlers logging( const Options &options, std::function<void()> changed );

// Logs that this command reads modules by itself.
void warnOfFlags();

// Logs that the plug-in can't be loaded, and returns the exit code.
int reportLoadFault( const Fault &fault );

} // namespace Host
