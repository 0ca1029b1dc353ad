#include "host/session/ServerProbe.h"

#include <cerrno>
#include <cstdlib>
#include <sockets/SocketFile.h>
#include <sockets/Unreachable.h>
#include <stdexcept>

namespace Host {

std::string serverSocket( const BoardFiles::PluginServer &server ) {
   const char *named = server.variable.empty() ? nullptr : std::getenv( server.variable.c_str() );
   return named && *named ? named : server.socket;
}

std::string whyNoServer( const BoardFiles::PluginServer &server ) {
   const std::string path = serverSocket( server );
   if ( path.empty() )
      return {};
   try {
      const int error = Sockets::tryToConnect( path );
      return error == 0 || error == EAGAIN ? "" : Sockets::whyUnreachable( path, error );
   } catch ( const std::runtime_error &wrong ) { // the path can't be that of a socket
      return wrong.what();
   }
}

} // namespace Host
