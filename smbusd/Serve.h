#pragma once

#include "smbusd/CommandLine.h"

namespace Smbusd {

// Serves until SIGTERM or SIGINT. Throws std::exception when it can't start.
void serve( const Options & );

// Prints what carries each bus, and what is wrong, to the standard streams. Whether all is well.
// Throws BoardError for a file that is no routes file.
bool checkRoutes( const Options & );

} // namespace Smbusd
