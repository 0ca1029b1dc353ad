#include "smbusd/server/Server.h"

#include <boost/asio.hpp>
#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <system_error>

namespace Smbusd {

namespace asio = boost::asio;
using boost::system::error_code;

Server::Server( asio::io_context &context, std::unique_ptr<Sockets::SocketFile> file,
                MakeConversation makeConversation, const Limits &limits, Buffers &buffers )
   : file_( std::move( file ) ), makeConversation_( std::move( makeConversation ) ),
     limits_( limits ), buffers_( buffers ), acceptor_( context, Protocol(), file_->release() ),
     pause_( context ) {
   accept();
}

void Server::accept() {
   acceptor_.async_accept( [this]( error_code error, Protocol::socket socket ) {
      if ( !acceptor_.is_open() )
         return;
      if ( error )
         return pause( error.message() );
      try {
         admit( std::move( socket ) );
      } catch ( const std::system_error &lacking ) { // a thread, or a descriptor
         return pause( lacking.what() );
      }
      if ( std::exchange( pausing_, false ) )
         spdlog::info( "{}: accepts clients again", file_->path() );
      accept();
   } );
}

// Probably there are no free descriptors. Without a pause the next try would fail at once, too.
void Server::pause( const std::string &reason ) {
   if ( !std::exchange( pausing_, true ) )
      spdlog::error( "{}: can't accept a client: {}; tries again until it can", file_->path(),
                     reason );
   pause_.expires_after( std::chrono::milliseconds( 100 ) );
   pause_.async_wait( [this]( error_code stopped ) {
      if ( !stopped && acceptor_.is_open() )
         accept();
   } );
}

void Server::admit( Protocol::socket socket ) {
   const Peer peer = peerOf( socket.native_handle() );
   std::string refusal = whyNoPlaceFor( peer );
   // As many connections as there are places may wait for their refusal. Any beyond that are closed
   // without an answer.
   if ( !refusal.empty() && leaving_.size() >= limits_.clients )
      return;
   // A session can't wait for the end of its own thread.
   const auto ended = [this, executor = acceptor_.get_executor()]( Session &session ) {
      asio::post( executor, [this, &session] {
         leaving_.erase( &session );
         sessions_.erase( &session );
      } );
   };
   auto conversation = makeConversation_( peer );
   auto session = std::make_unique<Session>( peer, limits_, buffers_, std::move( conversation ),
                                             std::move( refusal ), ended );
   socket.release();
   session->start();
   if ( session->refused() )
      leaving_.insert( session.get() );
   sessions_.emplace( session.get(), std::move( session ) );
}

std::string Server::whyNoPlaceFor( const Peer &peer ) {
   size_t ofProcess = 0;
   for ( const auto &[key, session] : sessions_ )
      ofProcess += session->peer().process == peer.process && !leaving_.contains( key );
   if ( ofProcess >= limits_.clientsPerProcess )
      return fmt::format( "too many clients: process {} has {} connections already, and no process "
                          "may have more",
                          peer.process, ofProcess );
   if ( sessions_.size() - leaving_.size() >= limits_.clients && !makePlace() )
      return fmt::format( "too many clients: {} are connected", limits_.clients );
   return {};
}

// False when no connection is idle.
bool Server::makePlace() {
   Session *longest = nullptr;
   Session::Clock::time_point since = Session::Clock::time_point::max();
   for ( const auto &[key, session] : sessions_ ) {
      const auto idle = session->idleSince();
      if ( !idle || *idle >= since || leaving_.contains( key ) )
         continue;
      longest = key;
      since = *idle;
   }
   if ( !longest )
      return false;
   leaving_.insert( longest );
   longest->giveWay();
   spdlog::warn( "{} clients are connected: process {}, which was idle for the longest time, gives "
                 "way to another",
                 limits_.clients, longest->peer().process );
   return true;
}

Server::~Server() {
   const auto limit = Session::Clock::now() + std::chrono::milliseconds( 200 );
   for ( const auto &[key, session] : sessions_ )
      session->waitUntil( limit );
   sessions_.clear();
}

void Server::stop() {
   file_.reset(); // first, so that it is not the file of a server that comes now
   acceptor_.close();
   pause_.cancel();
   for ( const auto &[key, session] : sessions_ )
      session->stop();
}

} // namespace Smbusd
