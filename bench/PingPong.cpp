#include "PingPong.h"

#include <cstdlib>
#include <sys/socket.h>
#include <unistd.h>

namespace {

void transfer( ssize_t ( *call )( int, void *, size_t ), int fd, std::vector<char> &bytes ) {
   for ( size_t done = 0; done < bytes.size(); ) {
      const ssize_t n = call( fd, bytes.data() + done, bytes.size() - done );
      if ( n <= 0 )
         _exit( 0 );
      done += static_cast<size_t>( n );
   }
}

ssize_t writeBytes( int fd, void *bytes, size_t size ) { return write( fd, bytes, size ); }

} // namespace

PingPong::PingPong( size_t ping, size_t pong ) : ping_( ping ), pong_( pong ) {
   if ( socketpair( AF_UNIX, SOCK_STREAM, 0, ends_ ) != 0 )
      abort();
   echo_ = std::make_unique<ChildProcess>( [this] {
      close( ends_[0] );
      for ( ;; ) {
         transfer( read, ends_[1], ping_ );
         transfer( writeBytes, ends_[1], pong_ );
      }
   } );
}

PingPong::~PingPong() {
   echo_.reset();
   close( ends_[0] );
   close( ends_[1] );
}

void PingPong::exchange() {
   transfer( writeBytes, ends_[0], ping_ );
   transfer( read, ends_[0], pong_ );
}
