#pragma once

#include "boardfiles/DriverTable.h"

#include <string>

namespace Host {

// The socket that the plug-in connects to. Empty when the plug-in's data does not name it.
std::string serverSocket( const BoardFiles::PluginServer &server );

// Why the plug-in's server can't be reached, with what a user can do about it. Empty when it can be
// reached, or when the plug-in's data does not name its socket.
std::string whyNoServer( const BoardFiles::PluginServer &server );

} // namespace Host
