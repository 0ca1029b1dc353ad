#include "smbusd/export/VhciPort.h"

#include <fmt/format.h>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

namespace Smbusd::Export {

namespace {

constexpr int fullSpeed = 2;      // the kernel's number
constexpr int freePort = 4;       // the state of a port in the controller's status
constexpr const char *hub = "hs"; // the ports for full-speed devices

// The status has a line of titles, then one line for each port: hub, number, state ("hs  0000
// 004").
unsigned findFree( const std::string &controller ) {
   std::ifstream file( controller + "/status" );
   if ( !file )
      throw ExportError( fmt::format( "{}/status: {}; is the module vhci-hcd loaded?", controller,
                                      std::strerror( errno ) ) );
   for ( std::string line; std::getline( file, line ); ) {
      std::istringstream words( line );
      std::string kind, number;
      int state = 0;
      if ( words >> kind >> number >> state && kind == hub && state == freePort )
         return static_cast<unsigned>( std::stoul( number ) );
   }
   throw ExportError( fmt::format( "{}: no port is free", controller ) );
}

} // namespace

VhciPort::VhciPort( const std::string &controller ) : controller_( controller ) {
   const unsigned number = findFree( controller );
   int ends[2];
   if ( socketpair( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends ) != 0 )
      throw ExportError( fmt::format( "socketpair: {}", std::strerror( errno ) ) );
   connection_ = std::make_unique<UsbIpConnection>( ends[0] );
   const UsbIpConnection kernels( ends[1] ); // the kernel keeps its own reference to the socket
   // Port, socket, a device number that is not 0, speed.
   write( "attach", fmt::format( "{} {} {} {}", number, ends[1], number + 1, fullSpeed ) );
}

void VhciPort::write( const std::string &file, const std::string &text ) const {
   const std::string path = controller_ + "/" + file;
   const int fd = open( path.c_str(), O_WRONLY | O_CLOEXEC );
   const bool written =
      fd >= 0 && ::write( fd, text.data(), text.size() ) == static_cast<ssize_t>( text.size() );
   const int error = errno;
   if ( fd >= 0 )
      close( fd );
   if ( !written )
      throw ExportError( fmt::format( "{}: {}{}", path, std::strerror( error ),
                                      error == EACCES ? "; only root may write it" : "" ) );
}

} // namespace Smbusd::Export
