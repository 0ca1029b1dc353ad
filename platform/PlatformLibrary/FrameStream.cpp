#include "PlatformLibrary/FrameStream.h"

#include "sockets/Frames.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <string>

namespace PlatformLibrary {

namespace {

int sendAll( int fd, const std::string &bytes, const Deadline &deadline ) {
   for ( size_t sent = 0; sent < bytes.size(); ) {
      // MSG_NOSIGNAL: when the server has gone, this call fails; no SIGPIPE ends the daemon.
      const ssize_t count = send( fd, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL );
      if ( count >= 0 )
         sent += static_cast<size_t>( count );
      else if ( errno != EINTR && ( errno != EAGAIN || !deadline.waitFor( fd, POLLOUT ) ) )
         return errno;
   }
   return 0;
}

// Waits for up to atMost bytes and appends them. When the peer has disconnected: ECONNRESET before
// the first byte of a frame, EPROTO in the middle of one.
int receiveSome( int fd, size_t atMost, std::string &bytes, const Deadline &deadline ) {
   const size_t before = bytes.size();
   bytes.resize( before + atMost );
   ssize_t count = -1;
   int error = EAGAIN;
   while ( count < 0 && ( error == EAGAIN || error == EINTR ) ) {
      if ( deadline.waitFor( fd, POLLIN ) )
         count = recv( fd, bytes.data() + before, atMost, 0 );
      error = errno;
   }
   bytes.resize( before + static_cast<size_t>( std::max<ssize_t>( count, 0 ) ) );
   if ( count > 0 )
      return 0;
   if ( count < 0 && error != ECONNRESET )
      return error;
   return before == 0 ? ECONNRESET : EPROTO;
}

} // namespace

int sendFrame( int fd, const google::protobuf::MessageLite &message, const Deadline &deadline ) {
   if ( message.ByteSizeLong() > Sockets::maxFrameBytes )
      return EPROTO;
   return sendAll( fd, Sockets::framed( message ), deadline );
}

// Receives the whole frame before it parses it: protobuf's own socket streams abort the process
// when a stream that ended early gets bytes back.
int receiveFrame( int fd, google::protobuf::MessageLite &message, const Deadline &deadline ) {
   using State = Sockets::Frame::State;
   constexpr size_t firstChunk = 4096;
   std::string bytes;
   Sockets::Frame frame;
   while ( frame.state == State::Incomplete ) {
      const size_t missing = frame.size == 0 ? firstChunk : frame.size - bytes.size();
      if ( const int error = receiveSome( fd, missing, bytes, deadline ) )
         return error;
      frame = Sockets::firstFrame( bytes );
   }
   if ( frame.state != State::Whole )
      return EPROTO;
   // Nobody asked for the bytes after the answer. The answer is valid, but the connection ends, so
   // that the next request opens a new one.
   if ( bytes.size() > frame.size )
      shutdown( fd, SHUT_RDWR );
   const auto size = static_cast<int>( frame.message.size() );
   return message.ParseFromArray( frame.message.data(), size ) ? 0 : EPROTO;
}

} // namespace PlatformLibrary
