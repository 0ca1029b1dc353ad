#pragma once

#include <sys/types.h>

namespace Smbusd {

// Who is at the other end of a connection.
struct Peer {
   int socket = -1; // of the connection; not owned
   uid_t user = 0;
   pid_t process = 0;
};

// Reads the credentials of a Unix stream socket. They are those of its connect().
Peer peerOf( int socket );

} // namespace Smbusd
