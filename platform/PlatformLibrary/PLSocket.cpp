#include "PlatformLibrary/PLSocket.h"

#include "PlatformLibrary/FrameStream.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

namespace PlatformLibrary {

namespace {

using std::chrono::milliseconds;

std::string_view serverPath() {
   const char *path = std::getenv( "ORBIS_SMBUS_SOCKET" );
   return path && *path ? path : "/run/orbis/smbus.sock";
}

milliseconds timeLimit() {
   constexpr milliseconds usual( 10'000 );
   const char *text = std::getenv( "ORBIS_SMBUS_TIMEOUT_MS" );
   if ( !text )
      return usual;
   const char *end = text + std::strlen( text );
   uint32_t count = 0;
   const auto [rest, error] = std::from_chars( text, end, count );
   return error == std::errc() && rest == end && count > 0 ? milliseconds( count ) : usual;
}

int fail( int error ) {
   errno = error;
   return -1;
}

bool makeNonBlocking( int fd ) {
   const int flags = fcntl( fd, F_GETFL );
   return flags >= 0 && fcntl( fd, F_SETFL, flags | O_NONBLOCK ) == 0;
}

// When the backlog of a Unix socket is full, a non-blocking connect fails at once, and poll can't
// wait for it. A blocking connect waits up to the send timeout, then fails with EAGAIN.
int connectWithin( int fd, const sockaddr_un &address, const Deadline &deadline ) {
   for ( ;; ) {
      const auto left = deadline.left().count();
      if ( left == 0 )
         return ETIMEDOUT;
      const timeval limit{ static_cast<time_t>( left / 1000 ),
                           static_cast<suseconds_t>( left % 1000 * 1000 ) };
      setsockopt( fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit );
      if ( connect( fd, reinterpret_cast<const sockaddr *>( &address ), sizeof address ) == 0 )
         return 0;
      if ( errno != EINTR && errno != EAGAIN )
         return errno;
   }
}

// The connected descriptor, or -1 with errno set.
int connectToServer( const Deadline &deadline ) {
   const std::string_view path = serverPath();
   sockaddr_un address{};
   address.sun_family = AF_UNIX;
   if ( path.size() >= sizeof address.sun_path )
      return fail( ENAMETOOLONG );
   path.copy( address.sun_path, path.size() );

   const int fd = socket( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0 );
   if ( fd < 0 )
      return -1;
   int error = connectWithin( fd, address, deadline );
   if ( error == 0 && !makeNonBlocking( fd ) )
      error = errno;
   if ( error == 0 )
      return fd;
   close( fd );
   return fail( error );
}

// The server sends nothing between transactions. If the descriptor is readable then, the connection
// has ended, or a late answer has come.
bool isStale( int fd ) {
   pollfd watched{ fd, POLLIN, 0 };
   return poll( &watched, 1, 0 ) != 0;
}

void drop( int &fd ) {
   if ( fd >= 0 )
      close( std::exchange( fd, -1 ) );
}

} // namespace

PLSocket::PLSocket() = default;
PLSocket::~PLSocket() = default;

int PLSocket::setup() {
   constexpr milliseconds oneAttempt( 1'000 );
   drop( fd );
   fd = connectToServer( Deadline( std::min( oneAttempt, timeLimit() ) ) );
   return fd < 0 ? -1 : 0;
}

int PLSocket::sendRequestWait( Smbus::TransactionRequest *request,
                               Smbus::TransactionResponse **response ) {
   const Deadline deadline( timeLimit() );
   if ( fd >= 0 && isStale( fd ) )
      drop( fd );
   if ( fd < 0 )
      fd = connectToServer( deadline );
   if ( fd < 0 )
      return -1;

   auto answer = std::make_unique<Smbus::TransactionResponse>();
   int error = sendFrame( fd, *request, deadline );
   if ( error == 0 )
      error = receiveFrame( fd, *answer, deadline );
   if ( error != 0 ) {
      drop( fd );
      return fail( error );
   }
   *response = answer.release();
   return 0;
}

} // namespace PlatformLibrary
