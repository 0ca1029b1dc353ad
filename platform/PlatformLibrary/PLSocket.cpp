#include "PlatformLibrary/PLSocket.h"

#include "PlatformLibrary/Deadline.h"
#include "PlatformLibrary/FrameStream.h"

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

timeval toTimeval( milliseconds time ) {
   const auto count = time.count();
   return { static_cast<time_t>( count / 1000 ), static_cast<suseconds_t>( count % 1000 * 1000 ) };
}

// When the backlog of a Unix socket is full, a non-blocking connect fails at once, and poll can't
// wait for it. A blocking connect waits up to the send timeout, then fails with EAGAIN.
int connectWithin( int fd, const sockaddr_un &address, const Deadline &deadline ) {
   for ( ;; ) {
      const milliseconds left = deadline.left();
      if ( left == milliseconds::zero() )
         return ETIMEDOUT;
      const timeval limit = toTimeval( left );
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
   const int error = connectWithin( fd, address, deadline );
   if ( error == 0 )
      return fd;
   close( fd );
   return fail( error );
}

// The server sends nothing between transactions. If there is something to receive then, the
// connection has ended, or a late answer has come.
bool isStale( int fd ) {
   char byte;
   return recv( fd, &byte, 1, MSG_PEEK | MSG_DONTWAIT ) >= 0 ||
          ( errno != EAGAIN && errno != EINTR );
}

// The socket's own timeout: with it the usual answer costs one system call, without a poll before.
milliseconds setReceiveLimit( int fd, milliseconds limit ) {
   const timeval timeout = toTimeval( limit );
   setsockopt( fd, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout );
   return limit;
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
   receiveLimit_ = milliseconds::zero();
   return fd < 0 ? -1 : 0;
}

int PLSocket::sendRequestWait( Smbus::TransactionRequest *request,
                               Smbus::TransactionResponse **response ) {
   const milliseconds limit = timeLimit();
   const Deadline deadline( limit );
   bool waited = false;
   if ( fd >= 0 && isStale( fd ) )
      drop( fd );
   if ( fd < 0 ) {
      fd = connectToServer( deadline );
      receiveLimit_ = milliseconds::zero();
      waited = true;
   }
   if ( fd < 0 )
      return -1;
   if ( receiveLimit_ != limit )
      receiveLimit_ = setReceiveLimit( fd, limit );

   auto answer = std::make_unique<Smbus::TransactionResponse>();
   int error = sendFrame( fd, *request, deadline, waited );
   if ( error == 0 )
      error = receiveFrame( fd, *answer, deadline, waited ? FirstLook::Polls : FirstLook::Waits );
   if ( error != 0 ) {
      drop( fd );
      return fail( error );
   }
   *response = answer.release();
   return 0;
}

} // namespace PlatformLibrary
