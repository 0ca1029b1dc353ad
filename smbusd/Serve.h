#pragma once

#include "smbusd/CommandLine.h"

namespace Smbusd {

// Serves until SIGTERM or SIGINT. Throws std::exception when it can't start.
void serve( const Options & );

// Prints what each bus of the routes file is, and the errors. Returns whether there were none.
// Throws BoardError when it is not a routes file.
bool checkRoutes( const Options & );

} // namespace Smbusd
