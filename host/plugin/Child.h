#pragma once

namespace Host {

// The descriptor that the child finds its socket at.
constexpr int childSocket = 3;

// The program's other half: holds the plug-in, runs its timers, and does what the parent says over
// a socket, until the parent closes it. The result is the process's exit code.
int runChild( int socket );

} // namespace Host
