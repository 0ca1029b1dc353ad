#include "smbusd/control/ControlServer.h"

#include "sockets/Frames.h"

#include <boost/asio.hpp>
#include <spdlog/spdlog.h>

#include <utility>

namespace Smbusd {

namespace asio = boost::asio;
using boost::system::error_code;

namespace {

constexpr unsigned maxQueued = 4096; // traced transfers of one client

} // namespace

ControlSession::ControlSession( Socket socket, Simulator::Controls &controls, Bus::Tracer &tracer,
                                Ended ended )
   : socket_( std::move( socket ) ), controls_( controls ), tracer_( tracer ),
     ended_( std::move( ended ) ) {}

void ControlSession::end() {
   if ( std::exchange( over_, true ) )
      return;
   tracer_.remove( this );
   error_code ignored;
   socket_.close( ignored );
   ended_( shared_from_this() );
}

void ControlSession::readMore() {
   socket_.async_read_some( asio::buffer( chunk_ ),
                            [this, self = shared_from_this()]( error_code error, size_t count ) {
                               if ( error )
                                  return end();
                               received_.append( chunk_.data(), count );
                               handleFrames();
                            } );
}

void ControlSession::handleFrames() {
   Sockets::Frame frame = Sockets::firstFrame( received_ );
   for ( ; frame.state == Sockets::Frame::State::Whole; frame = Sockets::firstFrame( received_ ) ) {
      handle( frame.message );
      received_.erase( 0, frame.size );
   }
   frame.state == Sockets::Frame::State::Incomplete ? readMore() : end();
}

void ControlSession::handle( std::string_view message ) {
   SmbusControl::Request request;
   SmbusControl::Response response;
   if ( !request.ParseFromArray( message.data(), static_cast<int>( message.size() ) ) )
      response.set_error( "the frame is not a request" );
   else
      response = controls_.answer( request );
   send( Sockets::framed( response ) );
   if ( request.has_trace() )
      trace();
}

void ControlSession::trace() {
   const auto executor = socket_.get_executor();
   const auto lost = std::make_shared<uint64_t>( 0 );
   tracer_.add( this, [weak = weak_from_this(), executor, lost,
                       queued = queued_]( const SmbusControl::Transfer &transfer ) {
      if ( *queued >= maxQueued ) {
         ++*lost;
         return;
      }
      SmbusControl::Response response;
      *response.mutable_transfer() = transfer;
      response.mutable_transfer()->set_lost( std::exchange( *lost, 0 ) );
      ++*queued;
      asio::post( executor, [weak, bytes = Sockets::framed( response )]() mutable {
         if ( const auto self = weak.lock() )
            self->send( std::move( bytes ) );
      } );
   } );
}

void ControlSession::send( std::string bytes ) {
   waiting_.push_back( std::move( bytes ) );
   if ( sending_.empty() )
      sendNext();
}

void ControlSession::sendNext() {
   sending_.clear();
   if ( waiting_.empty() || over_ )
      return;
   const auto count = static_cast<unsigned>( waiting_.size() );
   for ( const std::string &bytes : std::exchange( waiting_, {} ) )
      sending_ += bytes;
   asio::async_write( socket_, asio::buffer( sending_ ),
                      [this, count, self = shared_from_this()]( error_code error, size_t ) {
                         // Answers were sent, too, but not counted.
                         const unsigned before = *queued_;
                         *queued_ -= std::min( before, count );
                         if ( error )
                            return end();
                         sendNext();
                      } );
}

ControlServer::ControlServer( asio::io_context &context, std::unique_ptr<Sockets::SocketFile> file,
                              Simulator::Controls &controls, Bus::Tracer &tracer )
   : file_( std::move( file ) ), controls_( controls ), tracer_( tracer ),
     acceptor_( context, Protocol(), file_->release() ) {
   accept();
}

void ControlServer::accept() {
   acceptor_.async_accept( [this]( error_code error, Protocol::socket socket ) {
      if ( error == asio::error::operation_aborted )
         return;
      if ( !error && sessions_.size() < maxClients ) {
         const auto session = std::make_shared<ControlSession>(
            std::move( socket ), controls_, tracer_,
            [this]( const std::shared_ptr<ControlSession> &ended ) { sessions_.erase( ended ); } );
         sessions_.insert( session );
         session->start();
      } else if ( error ) {
         spdlog::error( "can't accept a client of the control socket: {}", error.message() );
      }
      accept();
   } );
}

void ControlServer::stop() {
   acceptor_.close();
   while ( !sessions_.empty() )
      std::shared_ptr( *sessions_.begin() )->end();
   file_.reset();
}

} // namespace Smbusd
