// All that a client sends over one connection to the HTTP server, until it closes it.
#include "http/Connection.h"
#include "fuzz/Expect.h"
#include "fuzz/MemoryFile.h"

#include <boost/asio/io_context.hpp>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

namespace {

using Protocol = boost::asio::generic::stream_protocol;

Http::Service service() {
   return { .handler = std::make_shared<const Http::Handler>(
               []( const Http::Request &request, const Http::Reply &reply ) {
                  if ( request.path == "/none" )
                     reply( { .status = Http::Status::notModified } );
                  else
                     reply( { .body = request.method } );
               } ),
            .guard = Http::Guard(),
            .open = std::make_shared<bool>(),
            .streams = std::make_shared<size_t>( 0 ) };
}

std::string receiveAll( int socket ) {
   std::string all;
   char chunk[4096];
   for ( ssize_t count; ( count = recv( socket, chunk, sizeof chunk, MSG_DONTWAIT ) ) > 0; )
      all.append( chunk, static_cast<size_t>( count ) );
   return all;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size ) {
   static const Http::Service answers = service();
   static boost::asio::io_context loop;
   int ends[2];
   Fuzz::expect( socketpair( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends ) == 0, "a socket pair" );
   const size_t length = std::min<size_t>( size, 16384 );
   Fuzz::expect( send( ends[0], data, length, 0 ) == static_cast<ssize_t>( length ),
                 "the socket takes all" );
   shutdown( ends[0], SHUT_WR );
   loop.restart();
   Http::serve( Protocol::socket( loop, Protocol( AF_UNIX, 0 ), ends[1] ), answers, false );
   loop.run();
   const std::string answer = receiveAll( ends[0] );
   Fuzz::expect( answer.empty() || answer.starts_with( "HTTP/1.1 " ),
                 "each answer is one of HTTP" );
   close( ends[0] );
   return 0;
}
