#include "smbusd/Peer.h"

#include "sockets/Credentials.h"

namespace Smbusd {

Peer peerOf( int socket ) {
   const Sockets::Credentials known = Sockets::credentialsOf( socket );
   return { socket, known.user, known.process };
}

} // namespace Smbusd
