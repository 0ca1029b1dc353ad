#include "PlatformLibrary/FrameStream.h"

#include "sockets/Frames.h"

#include <google/protobuf/io/coded_stream.h>

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>
#include <string_view>

namespace PlatformLibrary {

namespace {

int sendAll( int fd, std::string_view bytes, const Deadline &deadline, bool &waited ) {
   while ( !bytes.empty() ) {
      // MSG_NOSIGNAL: when the server has gone, this call fails; no SIGPIPE ends the daemon.
      const ssize_t count = send( fd, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT );
      if ( count >= 0 )
         bytes.remove_prefix( static_cast<size_t>( count ) );
      else if ( errno == EAGAIN )
         waited = true;
      if ( count < 0 && errno != EINTR && ( errno != EAGAIN || !deadline.waitFor( fd, POLLOUT ) ) )
         return errno;
   }
   return 0;
}

// Waits for up to `room` bytes and returns their number. 0: the peer has disconnected. Negative:
// failed with errno set.
ssize_t receiveSome( int fd, char *bytes, size_t room, const Deadline &deadline ) {
   for ( ;; ) {
      if ( !deadline.waitFor( fd, POLLIN ) )
         return -1;
      const ssize_t count = recv( fd, bytes, room, MSG_DONTWAIT );
      if ( count >= 0 || ( errno != EAGAIN && errno != EINTR ) )
         return count;
   }
}

// One call for the usual answer, which is small and comes in time.
ssize_t receiveFirst( int fd, char *bytes, size_t room, const Deadline &deadline,
                      FirstLook firstLook ) {
   if ( firstLook == FirstLook::Waits ) {
      const ssize_t count = recv( fd, bytes, room, 0 );
      if ( count >= 0 || ( errno != EAGAIN && errno != EINTR ) )
         return count;
   }
   return receiveSome( fd, bytes, room, deadline );
}

// The error of a receive that brought nothing: ECONNRESET before the first byte of a frame, EPROTO
// in the middle of one, else errno.
int errorOf( ssize_t count, bool inFrame ) {
   if ( count < 0 && errno != ECONNRESET )
      return errno;
   return inFrame ? EPROTO : ECONNRESET;
}

// Nobody asked for the bytes after the answer. The answer is valid, but the connection ends, so
// that the next request opens a new one.
int take( int fd, const Sockets::Frame &frame, size_t received,
          google::protobuf::MessageLite &message ) {
   if ( frame.state != Sockets::Frame::State::Whole )
      return EPROTO;
   if ( received > frame.size )
      shutdown( fd, SHUT_RDWR );
   const auto size = static_cast<int>( frame.message.size() );
   return message.ParseFromArray( frame.message.data(), size ) ? 0 : EPROTO;
}

} // namespace

int sendFrame( int fd, const google::protobuf::MessageLite &message, const Deadline &deadline,
               bool &waited ) {
   using Coded = google::protobuf::io::CodedOutputStream;
   const size_t size = message.ByteSizeLong();
   if ( size > Sockets::maxFrameBytes )
      return EPROTO;
   const auto length = static_cast<uint32_t>( size );
   if ( Coded::VarintSize32( length ) + size > smallFrame )
      return sendAll( fd, Sockets::framed( message ), deadline, waited );
   std::array<uint8_t, smallFrame> frame;
   uint8_t *const start = Coded::WriteVarint32ToArray( length, frame.data() );
   const uint8_t *const end = message.SerializeWithCachedSizesToArray( start );
   return sendAll(
      fd,
      { reinterpret_cast<const char *>( frame.data() ), static_cast<size_t>( end - frame.data() ) },
      deadline, waited );
}

// Receives the whole frame before it parses it: protobuf's own socket streams abort the process
// when a stream that ended early gets bytes back.
int receiveFrame( int fd, google::protobuf::MessageLite &message, const Deadline &deadline,
                  FirstLook firstLook ) {
   using State = Sockets::Frame::State;
   std::array<char, smallFrame> first;
   ssize_t count = receiveFirst( fd, first.data(), first.size(), deadline, firstLook );
   if ( count <= 0 )
      return errorOf( count, false );
   const std::string_view begin( first.data(), static_cast<size_t>( count ) );
   Sockets::Frame frame = Sockets::firstFrame( begin );
   if ( frame.state != State::Incomplete )
      return take( fd, frame, begin.size(), message );

   // The memory grows with the bytes that have come, not with those that were announced.
   std::string bytes( begin );
   while ( frame.state == State::Incomplete ) {
      const size_t before = bytes.size();
      const size_t missing = frame.size == 0 ? smallFrame : frame.size - before;
      bytes.resize( before + std::min( missing, std::max( before, smallFrame ) ) );
      count = receiveSome( fd, bytes.data() + before, bytes.size() - before, deadline );
      if ( count <= 0 )
         return errorOf( count, true );
      bytes.resize( before + static_cast<size_t>( count ) );
      frame = Sockets::firstFrame( bytes );
   }
   return take( fd, frame, bytes.size(), message );
}

} // namespace PlatformLibrary
