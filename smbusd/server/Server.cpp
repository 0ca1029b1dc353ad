#include "smbusd/server/Server.h"

#include <boost/asio.hpp>
#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <algorithm>

namespace Smbusd {

namespace asio = boost::asio;
using boost::system::error_code;

Server::Server( asio::io_context &context, std::unique_ptr<Sockets::SocketFile> file,
                Dispatcher &dispatcher )
   : file_( std::move( file ) ), dispatcher_( dispatcher ),
     acceptor_( context, Protocol(), file_->release() ), pause_( context ) {
   accept();
}

void Server::accept() {
   acceptor_.async_accept( [this]( error_code error, Protocol::socket socket ) {
      if ( error == asio::error::operation_aborted )
         return;
      if ( !error ) {
         admit( std::move( socket ) );
         return accept();
      }
      // Probably there are no free descriptors. Without a pause the next try would fail at once,
      // too.
      spdlog::error( "can't accept a client: {}", error.message() );
      pause_.expires_after( std::chrono::milliseconds( 100 ) );
      pause_.async_wait( [this]( error_code stopped ) {
         if ( !stopped )
            accept();
      } );
   } );
}

void Server::admit( Protocol::socket socket ) {
   // A further maxClients connections may wait for their refusal; any beyond that are closed
   // without an answer.
   if ( sessions_.size() >= 2 * maxClients )
      return;
   const auto served =
      std::count_if( sessions_.begin(), sessions_.end(),
                     []( const auto &session ) { return !session.second->refused(); } );
   std::string refusal;
   if ( static_cast<size_t>( served ) >= maxClients ) {
      refusal = fmt::format( "too many clients: {} are connected", maxClients );
      spdlog::warn( "refused a client: {}", refusal );
   }
   // A session can't wait for the end of its own thread.
   const auto ended = [this, executor = acceptor_.get_executor()]( Session &session ) {
      asio::post( executor, [this, &session] { sessions_.erase( &session ); } );
   };
   auto session =
      std::make_unique<Session>( socket.release(), dispatcher_, std::move( refusal ), ended );
   sessions_.emplace( session.get(), std::move( session ) );
}

Server::~Server() { sessions_.clear(); }

void Server::stop() {
   acceptor_.close();
   pause_.cancel();
   for ( const auto &[key, session] : sessions_ )
      session->end();
   file_.reset();
}

} // namespace Smbusd
