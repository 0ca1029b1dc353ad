#pragma once

namespace Host {

// The file descriptors of the child's socket to its parent, and of the memory that it shares with
// it.
constexpr int childSocket = 3, childPage = 4;

// The main function of the child process: it loads the plug-in, runs its timers, and carries out
// the parent's commands until the parent closes the socket. Returns the exit code.
int runChild( int socket, int page );

} // namespace Host
