#include "smbusd/server/Session.h"

#include "smbusd/server/Outbox.h"
#include "smbusd/server/Transport.h"
#include "sockets/Frames.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace Smbusd {

namespace {

constexpr size_t chunkBytes = 16384;

} // namespace

Session::Session( const Peer &peer, const Limits &limits, Buffers &buffers,
                  std::unique_ptr<Conversation> conversation, std::string refusal, Ended ended )
   : peer_( peer ), limits_( limits ), memory_( buffers ),
     conversation_( std::move( conversation ) ), refusal_( std::move( refusal ) ),
     ended_( std::move( ended ) ), idleSince_( Clock::now() ) {}

void Session::start() {
   thread_ = std::thread( [this] { serve(); } );
}

Session::~Session() {
   end();
   if ( thread_.joinable() )
      thread_.join();
   close( peer_.socket );
}

// Wakes the thread wherever it waits at the socket.
void Session::end() { shutdown( peer_.socket, SHUT_RDWR ); }

// It sees the end of what its client sends.
void Session::stop() { shutdown( peer_.socket, SHUT_RD ); }

void Session::waitUntil( Clock::time_point limit ) { ( void )done_.try_acquire_until( limit ); }

// The client sees the end at once, before it sends more.
void Session::giveWay() {
   leaves_ = true;
   if ( !sending_ && !hasUnread() )
      end();
}

bool Session::hasUnread() const {
   int unread = 0;
   return ioctl( peer_.socket, FIONREAD, &unread ) == 0 && unread > 0;
}

std::optional<Session::Clock::time_point> Session::idleSince() const {
   if ( !idle_ || hasUnread() )
      return {};
   return idleSince_;
}

void Session::serve() {
   try {
      if ( !refused() )
         converse();
      else if ( waitFor( peer_.socket, POLLIN, Clock::now() + limits_.frameTime ) )
         refuse( refusal_ );
   } catch ( const BuffersFull &full ) {
      refuse( full.what() );
   }
   end();
   done_.release();
   ended_( *this );
}

void Session::converse() {
   while ( waitForBytes() && receiveMore() ) {
   }
   // A client that traces gets what passed before the server stopped.
   if ( Outbox *const outbox = conversation_ ? conversation_->outbox() : nullptr )
      send( std::exchange( unsent_, {} ) + outbox->take() );
}

// Meanwhile the client gets what is in the outbox. Returns false when the connection has to end.
bool Session::waitForBytes() {
   Outbox *const outbox = conversation_->outbox();
   if ( !outbox && !frameEnd_ )
      return true; // recv() waits
   for ( ;; ) {
      const int patience = frameEnd_ ? millisecondsUntil( *frameEnd_ ) : -1;
      if ( patience == 0 ) {
         refuse( fmt::format( "a frame was not complete {} ms after its first byte",
                              limits_.frameTime.count() ) );
         return false;
      }
      const bool sends = !unsent_.empty();
      pollfd watched[] = { { peer_.socket, static_cast<short>( POLLIN | ( sends ? POLLOUT : 0 ) ),
                             0 },
                           { outbox && !sends ? outbox->event() : -1, POLLIN, 0 } };
      if ( poll( watched, 2, patience ) <= 0 )
         continue;
      if ( ( sends || watched[1].revents ) && !sendFromOutbox( *outbox ) )
         return false;
      if ( watched[0].revents & ~POLLOUT )
         return true;
   }
}

// A client may stop reading for as long as it likes: what it misses is counted.
bool Session::sendFromOutbox( Outbox &outbox ) {
   if ( unsent_.empty() )
      unsent_ = outbox.take();
   const ssize_t count =
      ::send( peer_.socket, unsent_.data(), unsent_.size(), MSG_NOSIGNAL | MSG_DONTWAIT );
   if ( count < 0 )
      return errno == EAGAIN || errno == EINTR;
   unsent_.erase( 0, static_cast<size_t>( count ) );
   idleSince_ = Clock::now();
   return true;
}

// False: the connection has to end.
bool Session::receiveMore() {
   char chunk[chunkBytes];
   // After a long frame nothing is received with it, so that it stays in the memory it has.
   const size_t wanted =
      frameSize_ > received_.size() ? frameSize_ - received_.size() : sizeof chunk;
   const ssize_t count = receive( peer_.socket, chunk, std::min( wanted, sizeof chunk ) );
   if ( count <= 0 )
      return false;
   idle_ = false;
   // Usually it is one whole frame. Of a long one nothing is copied twice.
   const std::string_view bytes( chunk, static_cast<size_t>( count ) );
   if ( received_.empty() )
      return handleFrames( bytes );
   received_ += bytes;
   return handleFrames( received_ );
}

// Handles all whole frames of a chunk or of received_, and keeps the rest.
bool Session::handleFrames( std::string_view bytes ) {
   for ( ;; ) {
      const Sockets::Frame frame = Sockets::firstFrame( bytes );
      switch ( frame.state ) {
      case Sockets::Frame::State::Incomplete:
         keep( bytes, frame.size );
         return true;
      case Sockets::Frame::State::TooLong:
         refuse( fmt::format( "a frame of more than {} bytes", Sockets::maxFrameBytes ) );
         return false;
      case Sockets::Frame::State::NoLength:
         refuse( "the length of a frame is not a varint" );
         return false;
      case Sockets::Frame::State::Whole:
         conversation_->take( frame.message, memory_ );
         bytes.remove_prefix( frame.size );
         frameEnd_.reset();
         // Its memory is not needed any more, and the answer may need some.
         if ( received_.capacity() > Buffers::keptBytes ) {
            std::string( bytes ).swap( received_ );
            bytes = received_;
         }
         if ( !answer( bytes.empty() ) )
            return false;
      }
   }
}

void Session::keep( std::string_view bytes, size_t frameSize ) {
   frameSize_ = frameSize;
   if ( !bytes.empty() && !frameEnd_ )
      frameEnd_ = Clock::now() + limits_.frameTime;
   memory_.holds( frameSize );
   const bool areKept = !received_.empty();
   if ( areKept )
      received_.erase( 0, received_.size() - bytes.size() );
   received_.reserve( frameSize );
   if ( !areKept )
      received_ = bytes;
}

bool Session::answer( bool isLast ) {
   std::optional<std::string> frame = conversation_->answer( memory_ );
   if ( !frame )
      return false;
   if ( isLast ) { // and not later, since the client may look at once
      idleSince_ = Clock::now();
      sending_ = true;
      idle_ = true;
   }
   if ( !unsent_.empty() )
      frame->insert( 0, std::exchange( unsent_, {} ) );
   const bool sent = send( *frame );
   sending_ = false;
   if ( !sent )
      return false;
   frame.reset();
   memory_.holds( 0 );
   return !leaves_ || !isLast || hasUnread();
}

bool Session::send( std::string_view bytes ) {
   const Sent sent = sendAll( peer_.socket, bytes, limits_.sendTime );
   if ( sent == Sent::Late )
      spdlog::warn( "process {} did not read its answer within {} ms: its connection ends",
                    peer_.process, limits_.sendTime.count() );
   return sent == Sent::All;
}

void Session::refuse( const std::string &reason ) {
   spdlog::warn( "refused process {}: {}", peer_.process, reason );
   const std::string frame = std::exchange( unsent_, {} ) + conversation_->refusal( reason );
   conversation_.reset();
   std::string().swap( received_ );
   memory_.holds( 0 );
   idleSince_ = Clock::time_point::min(); // the first to give way
   idle_ = true;
   if ( !send( frame ) )
      return;
   // A client that still sends its frame would not look for an answer if that failed.
   shutdown( peer_.socket, SHUT_WR );
   discard( peer_.socket, Clock::now() + limits_.frameTime );
}

} // namespace Smbusd
