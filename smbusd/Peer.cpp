#include "smbusd/Peer.h"

#include <sys/socket.h>

namespace Smbusd {

Peer peerOf( int socket ) {
   ucred credentials{};
   socklen_t size = sizeof credentials;
   getsockopt( socket, SOL_SOCKET, SO_PEERCRED, &credentials, &size );
   return { socket, credentials.uid, credentials.pid };
}

} // namespace Smbusd
