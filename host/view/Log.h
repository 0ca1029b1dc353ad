#ifndef ORBIS_HOST_VIEW_LOG_H
#define ORBIS_HOST_VIEW_LOG_H

#include "session/Session.h"
#include "view/CommandLine.h"

namespace Host {

/// Sets spdlog up for a command: everything goes to standard error.
void setUpLog( const Options &options );

/// Handlers that log what a session tells, and call `changed` when something may look different.
Session::Handlers logging( const Options &options, std::function<void()> changed );

} // namespace Host

#endif
