#pragma once

#include "host/commands/CommandLine.h"
#include "host/session/Session.h"

namespace Host {

// Sets spdlog up for a command: everything goes to standard error.
void setUpLog( const Options &options );

// Handlers that log what a session tells, and call `changed` when something may look different.
Session::Handlers logging( const Options &options, std::function<void()> changed );

} // namespace Host
