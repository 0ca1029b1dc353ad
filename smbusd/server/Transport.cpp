#include "smbusd/server/Transport.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <optional>

namespace Smbusd {

int millisecondsUntil( SocketClock::time_point end ) {
   using std::chrono::milliseconds;
   const auto left = std::chrono::ceil<milliseconds>( end - SocketClock::now() );
   return static_cast<int>( std::max( left, milliseconds( 0 ) ).count() );
}

bool waitFor( int socket, short events, SocketClock::time_point end ) {
   pollfd watched{ socket, events, 0 };
   int count = -1;
   do
      count = poll( &watched, 1, millisecondsUntil( end ) );
   while ( count < 0 && errno == EINTR );
   return count > 0;
}

ssize_t receive( int socket, char *chunk, size_t size ) {
   ssize_t count = -1;
   do
      count = recv( socket, chunk, size, 0 );
   while ( count < 0 && errno == EINTR );
   return count;
}

Sent sendAll( int socket, std::string_view bytes, std::chrono::milliseconds limit ) {
   std::optional<SocketClock::time_point> end; // usually the socket has room for all at once
   while ( !bytes.empty() ) {
      const ssize_t count = send( socket, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT );
      if ( count >= 0 ) {
         bytes.remove_prefix( static_cast<size_t>( count ) );
         continue;
      }
      if ( errno == EINTR )
         continue;
      if ( errno != EAGAIN )
         return Sent::Ended;
      if ( !end )
         end = SocketClock::now() + limit;
      if ( !waitFor( socket, POLLOUT, *end ) )
         return Sent::Late;
   }
   return Sent::All;
}

void discard( int socket, SocketClock::time_point end ) {
   char chunk[16384];
   while ( waitFor( socket, POLLIN, end ) && receive( socket, chunk, sizeof chunk ) > 0 ) {
   }
}

} // namespace Smbusd
