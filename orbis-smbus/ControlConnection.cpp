#include "orbis-smbus/ControlConnection.h"

#include "orbis-smbus/ServerConnection.h"
#include "sockets/Frames.h"
#include "sockets/Unreachable.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace SmbusClient {

namespace {

Unreachable unreachable( const std::string &reason ) {
   return Unreachable( "the simulation can't be reached: " + reason );
}

} // namespace

ControlConnection::ControlConnection( const std::string &path )
   : fd_( socket( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0 ) ) {
   sockaddr_un address{};
   address.sun_family = AF_UNIX;
   if ( path.size() >= sizeof address.sun_path )
      throw unreachable( Sockets::whyUnreachable( path, ENAMETOOLONG ) );
   path.copy( address.sun_path, path.size() );
   if ( connect( fd_, reinterpret_cast<sockaddr *>( &address ), sizeof address ) != 0 ) {
      const int error = errno;
      close( fd_ );
      throw unreachable( Sockets::whyUnreachable( path, error ) );
   }
}

ControlConnection::~ControlConnection() { close( fd_ ); }

SmbusControl::Response ControlConnection::ask( const SmbusControl::Request &request ) {
   const std::string bytes = Sockets::framed( request );
   for ( size_t sent = 0; sent < bytes.size(); ) {
      const ssize_t count = send( fd_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL );
      if ( count < 0 )
         throw unreachable( std::strerror( errno ) );
      sent += static_cast<size_t>( count );
   }
   SmbusControl::Response response = receive();
   if ( !response.error().empty() )
      throw Failed( response.error() );
   return response;
}

SmbusControl::Response ControlConnection::receive() {
   Sockets::Frame frame = Sockets::firstFrame( received_ );
   while ( frame.state == Sockets::Frame::State::Incomplete ) {
      char chunk[16384];
      const ssize_t count = recv( fd_, chunk, sizeof chunk, 0 );
      if ( count <= 0 )
         throw unreachable( count == 0 ? "the server closed the connection"
                                       : std::strerror( errno ) );
      received_.append( chunk, static_cast<size_t>( count ) );
      frame = Sockets::firstFrame( received_ );
   }
   SmbusControl::Response response;
   if ( frame.state != Sockets::Frame::State::Whole ||
        !response.ParseFromArray( frame.message.data(), static_cast<int>( frame.message.size() ) ) )
      throw unreachable( "its answer is not valid" );
   received_.erase( 0, frame.size );
   return response;
}

} // namespace SmbusClient
