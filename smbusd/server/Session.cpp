#include "smbusd/server/Session.h"

#include "smbus/Decode.h"
#include "sockets/Frames.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace Smbusd {

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
   while ( receiveMore() && handleFrames() ) {
   }
   end();
   ended_( *this );
}

bool Session::receiveMore() {
   char chunk[16384];
   ssize_t count = -1;
   do
      count = recv( peer_.socket, chunk, sizeof chunk, 0 );
   while ( count < 0 && errno == EINTR );
   if ( count > 0 )
      received_.append( chunk, static_cast<size_t>( count ) );
   return count > 0;
}

// Handles all whole frames. False: the connection has to end.
bool Session::handleFrames() {
   for ( ;; ) {
      const Sockets::Frame frame = Sockets::firstFrame( received_ );
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
         received_.erase( 0, frame.size );
      }
   }
}

bool Session::handleMessage( std::string_view message ) {
   if ( refused() ) {
      answer( Bus::failure( refusal_ ) );
      return false;
   }
   try {
      const auto response = dispatcher_.carryOut( Bus::parse( message ), peer_ );
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
