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
      // MSG_NOSIGNAL: a server that is gone is an error of this call, not the host's end.
      const ssize_t count = send( fd, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL );
      if ( count >= 0 )
         sent += static_cast<size_t>( count );
      else if ( errno != EINTR && ( errno != EAGAIN || !deadline.waitFor( fd, POLLOUT ) ) )
         return errno;
   }
   return 0;
}

// Waits for bytes, at most so many, and appends what has come. A peer that is gone is ECONNRESET
// while nothing has come, and a torn frame afterwards.
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

// The whole frame is received before it is parsed: the library's own socket streams abort the
// process when a stream that ended early is handed back bytes.
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
   // Bytes behind the answer belong to nothing that was asked: the answer stands, and the
   // connection ends here, so that whoever sends next finds it ended.
   if ( bytes.size() > frame.size )
      shutdown( fd, SHUT_RDWR );
   const auto size = static_cast<int>( frame.message.size() );
   return message.ParseFromArray( frame.message.data(), size ) ? 0 : EPROTO;
}

} // namespace PlatformLibrary
