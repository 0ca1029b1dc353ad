#include "RunningServer.h"

#include "server/Frames.h"

#include <boost/asio/post.hpp>

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <stdexcept>
#include <utility>

namespace SmbusdTest {

using namespace Smbusd;

Outcome HeldBus::transfer( const Transfer &transfer ) {
   std::unique_lock lock( mutex_ );
   log_.push_back( describe( transfer ) );
   if ( log_.back() == stopAt_ ) {
      stopped_ = true;
      changed_.notify_all();
      changed_.wait( lock, [this] { return stopAt_.empty(); } );
   }
   return { transfer.kind == Transfer::Kind::Read ? name_ : "", {} };
}

void HeldBus::stopAt( const std::string &transfer ) {
   const std::lock_guard lock( mutex_ );
   stopAt_ = transfer;
}

void HeldBus::waitUntilStopped() {
   std::unique_lock lock( mutex_ );
   changed_.wait( lock, [this] { return stopped_; } );
}

void HeldBus::goOn() {
   const std::lock_guard lock( mutex_ );
   stopAt_.clear();
   changed_.notify_all();
}

std::vector<std::string> HeldBus::log() const {
   const std::lock_guard lock( mutex_ );
   return log_;
}

RawClient::RawClient( const std::string &path )
   : fd_( socket( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0 ) ) {
   sockaddr_un address{};
   address.sun_family = AF_UNIX;
   path.copy( address.sun_path, sizeof address.sun_path - 1 );
   const timeval limit{ 5, 0 };
   setsockopt( fd_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit );
   if ( connect( fd_, reinterpret_cast<sockaddr *>( &address ), sizeof address ) != 0 )
      throw std::runtime_error( "no server at " + path );
}

void RawClient::send( const std::string &bytes ) {
   for ( size_t sent = 0; sent < bytes.size(); ) {
      const ssize_t count = ::send( fd_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL );
      if ( count <= 0 )
         return; // the server has ended the connection
      sent += static_cast<size_t>( count );
   }
}

void RawClient::send( const Smbus::TransactionRequest &request ) { send( framed( request ) ); }

std::optional<Smbus::TransactionResponse> RawClient::receive() {
   std::string bytes;
   Frame frame;
   while ( ( frame = firstFrame( bytes ) ).state == Frame::State::Incomplete ) {
      char byte;
      if ( recv( fd_, &byte, 1, 0 ) != 1 )
         return {};
      bytes += byte;
   }
   Smbus::TransactionResponse response;
   response.ParseFromArray( frame.message.data(), static_cast<int>( frame.message.size() ) );
   return response;
}

Smbus::TransactionResponse RawClient::ask( const Smbus::TransactionRequest &request ) {
   send( request );
   return receive().value();
}

void RawClient::leave() {
   if ( fd_ >= 0 )
      close( std::exchange( fd_, -1 ) );
}

RunningServer::RunningServer() {
   Busses busses;
   for ( const char *name : { "scd(4):1:2", "i2c:0" } ) {
      auto bus = std::make_unique<HeldBus>( name );
      held_[name] = bus.get();
      busses.emplace( *parseRootBusId( name ), std::move( bus ) );
   }
   dispatcher_ =
      std::make_unique<Dispatcher>( std::move( busses ), clock_, std::chrono::seconds( 2 ) );
   server_ =
      std::make_unique<Server>( context_, std::make_unique<SocketFile>( path_, "" ), *dispatcher_ );
   thread_ = std::thread( [this] { context_.run(); } );
}

RunningServer::~RunningServer() {
   boost::asio::post( context_, [this] { server_->stop(); } );
   thread_.join(); // nothing is left to do
}

} // namespace SmbusdTest
