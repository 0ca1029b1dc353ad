#pragma once

#include "smbusd/CommandLine.h"

namespace Smbusd {

// Serves until SIGTERM or SIGINT. Throws std::exception when it can't start.
void serve( const Options & );

// Prints what each bus of the routes file is, and the errors. Returns whether there were none.
// Throws BoardError when it is not a routes file.
bool checkRoutes( const Options & );

// Prints what each row of the policy allows, and the users and groups that aren't there. Returns
// whether all are. Throws BoardError when it is not a policy file.
bool checkPolicy( const Options & );

} // namespace Smbusd
