#include "RunningServer.h"

#include "sockets/Frames.h"

#include <boost/asio/post.hpp>
#include <spdlog/spdlog.h>

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace SmbusdTest {

using namespace TestSupport;
using namespace Bus;
using namespace Smbusd;

Outcome StoppableBus::transfer( const Transfer &transfer ) {
   std::unique_lock lock( mutex_ );
   log_.push_back( describe( transfer ) );
   if ( log_.back() == stopAt_ ) {
      stopped_ = true;
      changed_.notify_all();
      changed_.wait( lock, [this] { return stopAt_.empty(); } );
   }
   if ( transfer.kind != Transfer::Kind::Read )
      return {};
   std::string data = name_;
   data.resize( std::max<size_t>( data.size(), transfer.length ) );
   return { data, {} };
}

void StoppableBus::stopAt( const std::string &transfer ) {
   const std::lock_guard lock( mutex_ );
   stopAt_ = transfer;
}

void StoppableBus::waitUntilStopped() {
   std::unique_lock lock( mutex_ );
   changed_.wait( lock, [this] { return stopped_; } );
}

void StoppableBus::goOn() {
   const std::lock_guard lock( mutex_ );
   stopAt_.clear();
   changed_.notify_all();
}

std::vector<std::string> StoppableBus::log() const {
   const std::lock_guard lock( mutex_ );
   return log_;
}

RunningServer::RunningServer( const ServerSettings &settings ) : buffers_( settings.buffers ) {
   // As in the program, the log is there before the threads. ThreadSanitizer doesn't see how the
   // library guards its first use.
   spdlog::default_logger_raw();
   Busses busses;
   for ( const char *name : { "scd(4):1:2", "i2c:0" } ) {
      auto bus = std::make_unique<StoppableBus>( name );
      busses_[name] = bus.get();
      busses.emplace( *parseRootBusId( name ), std::move( bus ) );
   }
   dispatcher_ =
      std::make_unique<Dispatcher>( std::move( busses ), clock_, std::chrono::seconds( 2 ) );
   server_ =
      std::make_unique<Server>( context_, std::make_unique<Sockets::SocketFile>( path_, "" ),
                                conversationsWith( *dispatcher_ ), settings.limits, buffers_ );
   control_ = std::make_unique<Server>(
      context_, std::make_unique<Sockets::SocketFile>( controlPath_, "" ),
      controlConversations( settings.answerControl, tracer_ ), settings.controlLimits, buffers_ );
   thread_ = std::thread( [this] { context_.run(); } );
}

void RunningServer::waitForQueue( const std::string &bus, size_t length ) const {
   while ( dispatcher_->waiting( *parseRootBusId( bus ) ) != length )
      std::this_thread::yield();
}

RunningServer::~RunningServer() {
   boost::asio::post( context_, [this] { server_->stop(), control_->stop(); } );
   thread_.join(); // the io_context has no more work
}

} // namespace SmbusdTest
