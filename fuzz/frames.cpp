// Frames on a stream, as the server and its clients cut them. The first byte says after how many of
// the others the stream pauses.
#include "sockets/Frames.h"
#include "OrbisUtil/Smbus.pb.h"
#include "PlatformLibrary/FrameStream.h"
#include "fuzz/Expect.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/Quiet.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

namespace {

using State = Sockets::Frame::State;

// A client gets the same of the stream as what is in its first frame.
void receive( std::string_view bytes, const Sockets::Frame &frame ) {
   int ends[2];
   Fuzz::expect( socketpair( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends ) == 0, "a socket pair" );
   const ssize_t sent = send( ends[0], bytes.data(), bytes.size(), 0 );
   Fuzz::expect( sent == static_cast<ssize_t>( bytes.size() ), "the socket takes all" );
   shutdown( ends[0], SHUT_WR );
   Smbus::TransactionResponse received, parsed;
   const PlatformLibrary::Deadline deadline( std::chrono::seconds( 10 ) );
   const int error = PlatformLibrary::receiveFrame( ends[1], received, deadline,
                                                    PlatformLibrary::FirstLook::Polls );
   close( ends[0] );
   close( ends[1] );
   const bool good =
      frame.state == State::Whole &&
      parsed.ParseFromArray( frame.message.data(), static_cast<int>( frame.message.size() ) );
   Fuzz::expect( error == ( good            ? 0
                            : bytes.empty() ? ECONNRESET
                                            : EPROTO ),
                 "a client takes a frame if it is whole and a message" );
   Fuzz::expect( !good || received.SerializeAsString() == parsed.SerializeAsString(),
                 "a client gets the message of the frame" );
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size ) {
   Fuzz::quiet();
   if ( size == 0 )
      return 0;
   const std::string_view stream = Fuzz::textOf( data + 1, std::min<size_t>( size - 1, 32768 ) );
   const Sockets::Frame frame = Sockets::firstFrame( stream );
   const Sockets::Frame begun = Sockets::firstFrame( stream.substr( 0, data[0] ) );
   Fuzz::expect( begun.state == State::Incomplete || begun.state == frame.state,
                 "a frame doesn't change when more bytes come" );
   Fuzz::expect( begun.size == 0 || begun.size == frame.size, "a length stays what it is" );
   receive( stream, frame );
   for ( std::string_view rest = stream;; ) {
      const Sockets::Frame next = Sockets::firstFrame( rest );
      if ( next.state != State::Whole )
         return 0;
      Fuzz::expect( next.size > 0 && next.size <= rest.size(), "a whole frame is in its bytes" );
      rest.remove_prefix( next.size );
   }
}
