#include "smbusd/Peer.h"

#include "sockets/Credentials.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

namespace Smbusd {

Peer peerOf( int socket ) {
   const Sockets::Credentials known = Sockets::credentialsOf( socket );
   return { socket, known.user, known.process };
}

// A process may give itself any name, and the system cuts a long one, also in the middle of a
// character. A message with such a byte can't be read at all, so that nobody could ask any more.
std::string programOf( pid_t process ) {
   const char *folder = std::getenv( "ORBIS_PROC" );
   std::ifstream file( fmt::format( "{}/{}/comm", folder && *folder ? folder : "/proc", process ) );
   std::string name;
   std::getline( file, name );
   std::replace_if(
      name.begin(), name.end(), []( char c ) { return c < ' ' || c > '~'; }, '?' );
   return name;
}

} // namespace Smbusd
