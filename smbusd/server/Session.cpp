#include "smbusd/server/Session.h"

#include "smbus/Decode.h"
#include "sockets/Frames.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace Smbusd {

namespace {

constexpr size_t largestKept = 65536; // bytes of a request, or of its frame

} // namespace

Session::Session( int socket, Dispatcher &dispatcher, std::string refusal, Ended ended )
   : peer_( peerOf( socket ) ), dispatcher_( dispatcher ), refusal_( std::move( refusal ) ),
     ended_( std::move( ended ) ), thread_( [this] { serve(); } ) {}

Session::~Session() {
   end();
   thread_.join();
   close( peer_.socket );
}

// Wakes the thread wherever it waits at the socket.
void Session::end() { shutdown( peer_.socket, SHUT_RDWR ); }

void Session::serve() {
   while ( receiveMore() ) {
   }
   end();
   ended_( *this );
}

// False: the connection has to end.
bool Session::receiveMore() {
   char chunk[16384];
   ssize_t count = -1;
   do
      count = recv( peer_.socket, chunk, sizeof chunk, 0 );
   while ( count < 0 && errno == EINTR );
   if ( count <= 0 )
      return false;
   // Usually it is one whole frame. Of a long one nothing is copied twice.
   std::string_view bytes( chunk, static_cast<size_t>( count ) );
   if ( received_.empty() ) {
      const bool goesOn = handleFrames( bytes );
      received_ = bytes;
      return goesOn;
   }
   received_ += bytes;
   bytes = received_;
   const bool goesOn = handleFrames( bytes );
   received_.erase( 0, received_.size() - bytes.size() );
   if ( received_.empty() && received_.capacity() > largestKept )
      received_ = std::string();
   return goesOn;
}

// Handles all whole frames and leaves the rest.
bool Session::handleFrames( std::string_view &bytes ) {
   for ( ;; ) {
      const Sockets::Frame frame = Sockets::firstFrame( bytes );
      switch ( frame.state ) {
      case Sockets::Frame::State::Incomplete:
         return true;
      case Sockets::Frame::State::TooLong:
         answer( Bus::failure(
            fmt::format( "a frame of more than {} bytes", Sockets::maxFrameBytes ) ) );
         return false;
      case Sockets::Frame::State::NoLength:
         answer( Bus::failure( "the length of a frame is not a varint" ) );
         return false;
      case Sockets::Frame::State::Whole:
         if ( !handleMessage( frame.message ) )
            return false;
         bytes.remove_prefix( frame.size );
      }
   }
}

bool Session::handleMessage( std::string_view message ) {
   if ( refused() ) {
      answer( Bus::failure( refusal_ ) );
      return false;
   }
   try {
      Bus::parse( message, request_ );
      const auto response = dispatcher_.carryOut( request_, peer_ );
      if ( request_.SpaceUsedLong() > largestKept )
         request_ = {};
      return response && answer( *response );
   } catch ( const Bus::Refused &reason ) {
      spdlog::warn( "refused: {}", reason.what() );
      return answer( Bus::failure( reason.what() ) );
   }
}

bool Session::answer( const Smbus::TransactionResponse &response ) {
   const std::string frame = Sockets::framed( response );
   for ( size_t sent = 0; sent < frame.size(); ) {
      const ssize_t count =
         send( peer_.socket, frame.data() + sent, frame.size() - sent, MSG_NOSIGNAL );
      if ( count < 0 && errno != EINTR )
         return false;
      sent += static_cast<size_t>( std::max<ssize_t>( count, 0 ) );
   }
   return true;
}

} // namespace Smbusd
