#include "PlatformLibrary/Frames.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/util/delimited_message_util.h>

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <string>

namespace PlatformLibrary {

namespace io = google::protobuf::io;
namespace util = google::protobuf::util;

namespace {

constexpr size_t maxLengthBytes = 10; // of a varint

io::CodedInputStream reader( const std::string &bytes ) {
   const auto first = reinterpret_cast<const uint8_t *>( bytes.data() );
   return io::CodedInputStream( first, static_cast<int>( bytes.size() ) );
}

// False while the length at the head of a frame isn't there whole, or never will be.
bool readHead( const std::string &frame, uint64_t &length, size_t &headBytes ) {
   io::CodedInputStream stream = reader( frame );
   const bool read = stream.ReadVarint64( &length );
   headBytes = static_cast<size_t>( stream.CurrentPosition() );
   return read;
}

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
   if ( message.ByteSizeLong() > maxFrameBytes )
      return EPROTO;
   std::string frame;
   {
      io::StringOutputStream stream( &frame );
      util::SerializeDelimitedToZeroCopyStream( message, &stream );
   }
   return sendAll( fd, frame, deadline );
}

// The frame is had whole before it is parsed: the library's own socket streams abort the process
// when a stream that ended early is handed back bytes.
int receiveFrame( int fd, google::protobuf::MessageLite &message, const Deadline &deadline ) {
   constexpr size_t firstChunk = 4096;
   std::string frame;
   uint64_t length = 0;
   size_t headBytes = 0;
   while ( !readHead( frame, length, headBytes ) ) {
      if ( frame.size() >= maxLengthBytes )
         return EPROTO;
      if ( const int error = receiveSome( fd, firstChunk, frame, deadline ) )
         return error;
   }
   if ( length > maxFrameBytes )
      return EPROTO;
   const size_t whole = headBytes + length;
   while ( frame.size() < whole ) {
      if ( const int error = receiveSome( fd, whole - frame.size(), frame, deadline ) )
         return error;
   }
   // Bytes behind the answer belong to nothing that was asked: the answer stands, and the
   // connection ends here, so that whoever sends next finds it ended.
   if ( frame.size() > whole )
      shutdown( fd, SHUT_RDWR );
   io::CodedInputStream stream = reader( frame );
   bool nothingThere = false;
   return util::ParseDelimitedFromCodedStream( &message, &stream, &nothingThere ) ? 0 : EPROTO;
}

} // namespace PlatformLibrary
