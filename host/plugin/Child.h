#pragma once

namespace Host {

// The file descriptor of the child's socket to its parent.
constexpr int childSocket = 3;

// The main function of the child process: it loads the plug-in, runs its timers, and carries out
// the parent's commands until the parent closes the socket. Returns the exit code.
int runChild( int socket );

} // namespace Host
