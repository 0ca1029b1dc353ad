#include "host/serve/Place.h"

#include <cstdlib>

namespace Host {

std::filesystem::path serveSocket() {
   const char *path = std::getenv( "ORBIS_HOST_SOCKET" );
   return path && *path ? path : "/run/orbis/host.sock";
}

std::string serveName( const std::filesystem::path &board ) {
   return std::filesystem::canonical( board ).string();
}

} // namespace Host
