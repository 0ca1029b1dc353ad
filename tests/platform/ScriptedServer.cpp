#include "ScriptedServer.h"

#include <google/protobuf/io/zero_copy_stream_impl.h>
#include <google/protobuf/util/delimited_message_util.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <stdexcept>

namespace PlatformTest {

using google::protobuf::io::FileInputStream;
using namespace google::protobuf::util;

bool Connection::readRequest( Smbus::TransactionRequest &request ) const {
   FileInputStream stream( fd_ );
   return ParseDelimitedFromZeroCopyStream( &request, &stream, nullptr );
}

void Connection::answer( const Smbus::TransactionResponse &response ) const {
   std::string bytes;
   google::protobuf::io::StringOutputStream stream( &bytes );
   SerializeDelimitedToZeroCopyStream( response, &stream );
   stream.BackUp( 0 );
   send( bytes );
}

void Connection::send( const std::string &bytes ) const {
   for ( size_t sent = 0; sent < bytes.size(); ) {
      const ssize_t count = ::send( fd_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL );
      if ( count <= 0 )
         return; // the client has gone
      sent += static_cast<size_t>( count );
   }
}

void Connection::waitForClientToGo() const {
   char scrap[4096];
   while ( recv( fd_, scrap, sizeof scrap, 0 ) > 0 ) {
   }
}

ScriptedServer::ScriptedServer( const std::string &path, Script script, int backlog )
   : listener_( socket( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0 ) ) {
   sockaddr_un address{};
   address.sun_family = AF_UNIX;
   path.copy( address.sun_path, sizeof address.sun_path - 1 );
   unlink( path.c_str() );
   if ( bind( listener_, reinterpret_cast<sockaddr *>( &address ), sizeof address ) != 0 ||
        listen( listener_, backlog ) != 0 )
      throw std::runtime_error( "no server at " + path );
   if ( script )
      thread_ = std::thread( [this, script] { serve( script ); } );
}

void ScriptedServer::stop() {
   if ( listener_ < 0 )
      return;
   {
      const std::lock_guard lock( mutex_ );
      stopped_ = true;
      shutdown( listener_, SHUT_RDWR );
      if ( connected_ >= 0 )
         shutdown( connected_, SHUT_RDWR );
   }
   if ( thread_.joinable() )
      thread_.join();
   close( listener_ );
   listener_ = -1;
}

void ScriptedServer::serve( const Script &script ) {
   const auto connectedIs = [this]( int fd ) {
      const std::lock_guard lock( mutex_ );
      connected_ = fd;
      return !stopped_;
   };
   for ( ;; ) {
      const int fd = accept4( listener_, nullptr, nullptr, SOCK_CLOEXEC );
      if ( fd < 0 )
         return;
      if ( connectedIs( fd ) )
         script( Connection( fd ), connections_++ );
      connectedIs( -1 );
      close( fd );
   }
}

Smbus::TransactionResponse numbered( unsigned number ) {
   Smbus::TransactionResponse response;
   response.add_response()->set_data( std::to_string( number ) );
   return response;
}

} // namespace PlatformTest
