#include "http/Server.h"

#include "http/Connection.h"

#include <spdlog/spdlog.h>

#include <utility>

namespace Http {

Server::Server( boost::asio::io_context &loop, Listener listener, Handler handler, Limits limits,
                Guard guard, Sockets::ControlGroup group )
   : listener_( std::move( listener ) ),
     handler_( std::make_shared<const Handler>( std::move( handler ) ) ), limits_( limits ),
     guard_( std::move( guard ) ), group_( std::move( group ) ),
     acceptor_( loop, Protocol( listener_.family(), 0 ), listener_.release() ), pause_( loop ) {
   accept();
}

void Server::accept() {
   acceptor_.async_accept(
      [this]( const boost::system::error_code &failure, Protocol::socket socket ) {
         if ( failure == boost::asio::error::operation_aborted )
            return;
         if ( failure )
            return acceptLater( failure.message() );
         isPausing_ = false;
         const bool isFull = open_.use_count() > static_cast<long>( limits_.connections );
         std::string onlyReads;
         if ( listener_.isLocal() ) {
            const Sockets::Credentials client = Sockets::credentialsOf( socket.native_handle() );
            onlyReads = group_.has( client ) ? "" : group_.whyNot( client );
         }
         serve( std::move( socket ),
                { .handler = handler_,
                  .limits = limits_,
                  .guard = listener_.isLocal() ? std::optional<Guard>() : guard_,
                  .onlyReads = std::move( onlyReads ),
                  .open = open_,
                  .streams = streams_ },
                isFull );
         accept();
      } );
}

// Without free descriptors the next try would fail at once, too.
void Server::acceptLater( const std::string &why ) {
   if ( !std::exchange( isPausing_, true ) )
      spdlog::warn( "can't accept a client at {}: {}; it is tried again and again", name(), why );
   pause_.expires_after( std::chrono::milliseconds( 200 ) );
   pause_.async_wait( [this]( const boost::system::error_code &failure ) {
      if ( !failure )
         accept();
   } );
}

} // namespace Http
