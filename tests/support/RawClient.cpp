#include "RawClient.h"

#include "sockets/Frames.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace TestSupport {

RawClient::RawClient( const std::string &path )
   : fd_( socket( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0 ) ) {
   sockaddr_un address{};
   address.sun_family = AF_UNIX;
   path.copy( address.sun_path, sizeof address.sun_path - 1 );
   const timeval limit{ 5, 0 };
   setsockopt( fd_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit );
   if ( connect( fd_, reinterpret_cast<sockaddr *>( &address ), sizeof address ) != 0 )
      throw std::runtime_error( "no server at " + path );
}

void RawClient::send( const std::string &bytes ) {
   for ( size_t sent = 0; sent < bytes.size(); ) {
      const ssize_t count = ::send( fd_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL );
      if ( count <= 0 )
         return; // the server has ended the connection
      sent += static_cast<size_t>( count );
   }
}

void RawClient::send( const Smbus::TransactionRequest &request ) {
   send( Sockets::framed( request ) );
}

std::optional<std::string> RawClient::receiveMessage() {
   std::string bytes;
   Sockets::Frame frame;
   while ( ( frame = Sockets::firstFrame( bytes ) ).state == Sockets::Frame::State::Incomplete ) {
      // Nothing of the next frame is taken.
      const size_t had = bytes.size();
      bytes.resize( std::max( had + 1, frame.size ) );
      const ssize_t count = recv( fd_, bytes.data() + had, bytes.size() - had, 0 );
      if ( count <= 0 )
         return {};
      bytes.resize( had + static_cast<size_t>( count ) );
   }
   return std::string( frame.message );
}

std::optional<Smbus::TransactionResponse> RawClient::receive() {
   const auto message = receiveMessage();
   if ( !message )
      return {};
   Smbus::TransactionResponse response;
   response.ParseFromString( *message );
   return response;
}

Smbus::TransactionResponse RawClient::ask( const Smbus::TransactionRequest &request ) {
   send( request );
   return receive().value();
}

void RawClient::leave() {
   if ( fd_ >= 0 )
      close( std::exchange( fd_, -1 ) );
}

} // namespace TestSupport
