#pragma once

#include <sys/types.h>

#include <string>

namespace Smbusd {

// Who is at the other end of a connection.
struct Peer {
   int socket = -1; // of the connection; not owned
   uid_t user = 0;
   pid_t process = 0;
};

// Reads the credentials of a Unix stream socket. They are those of its connect().
Peer peerOf( int socket );

// The name of a process's program, in letters that a log and a message can have; empty where it is
// not known. ORBIS_PROC names another place for /proc, where the service's own hides the processes
// of others.
std::string programOf( pid_t process );

} // namespace Smbusd
