#pragma once

#include "boardfiles/DriverTable.h"

#include <string>

namespace Host {

// Why the plug-in's server can't be reached, with what a user can do about it. Empty when it can be
// reached, or when the plug-in's data does not name its socket.
std::string whyNoServer( const BoardFiles::PluginServer &server );

} // namespace Host
