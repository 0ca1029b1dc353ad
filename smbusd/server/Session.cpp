#include "smbusd/server/Session.h"

#include "smbus/Decode.h"
#include "sockets/Frames.h"

#include <boost/asio.hpp>
#include <fmt/format.h>
#include <spdlog/spdlog.h>

namespace Smbusd {

namespace asio = boost::asio;
using boost::system::error_code;

Session::Session( Socket socket, Dispatcher &dispatcher, std::string refusal, Ended ended )
   : socket_( std::move( socket ) ), dispatcher_( dispatcher ), refusal_( std::move( refusal ) ),
     ended_( std::move( ended ) ) {}

void Session::start() {
   socket_.non_blocking( true ); // for the peek in watchForDisconnect
   readMore();
}

void Session::end() {
   if ( client_->gone.exchange( true ) )
      return;
   error_code ignored;
   socket_.close( ignored );
   ended_( shared_from_this() );
}

void Session::readMore() {
   socket_.async_read_some( asio::buffer( chunk_ ),
                            [this, self = shared_from_this()]( error_code error, size_t count ) {
                               if ( error )
                                  return end();
                               received_.append( chunk_.data(), count );
                               handleFrame();
                            } );
}

void Session::handleFrame() {
   const Sockets::Frame frame = Sockets::firstFrame( received_ );
   switch ( frame.state ) {
   case Sockets::Frame::State::Incomplete:
      return readMore();
   case Sockets::Frame::State::TooLong:
      return answer(
         Bus::failure( fmt::format( "a frame of more than {} bytes", Sockets::maxFrameBytes ) ),
         true );
   case Sockets::Frame::State::NoLength:
      return answer( Bus::failure( "the length of a frame is not a varint" ), true );
   case Sockets::Frame::State::Whole:
      handleMessage( frame.message );
      received_.erase( 0, frame.size );
   }
}

void Session::handleMessage( std::string_view message ) {
   if ( refused() )
      return answer( Bus::failure( refusal_ ), true );
   Smbus::TransactionRequest request;
   try {
      request = Bus::parse( message );
   } catch ( const Bus::Refused &reason ) {
      spdlog::warn( "refused: {}", reason.what() );
      return answer( Bus::failure( reason.what() ) );
   }
   waiting_ = true;
   watchForDisconnect();
   const auto executor = socket_.get_executor();
   dispatcher_.dispatch(
      request, client_,
      [self = shared_from_this(), executor]( Smbus::TransactionResponse response ) {
         asio::post( executor,
                     [self, response = std::move( response )] { self->answer( response ); } );
      } );
}

// While a transaction runs, bytes of the next frame can wait. But a disconnect must be noticed at
// once, so that the waiting transactions of a client that has gone are dropped.
void Session::watchForDisconnect() {
   socket_.async_wait( Socket::wait_read, [this, self = shared_from_this()]( error_code error ) {
      if ( error || !waiting_ )
         return;
      char byte;
      error_code peeked;
      socket_.receive( asio::buffer( &byte, 1 ), Socket::message_peek, peeked );
      if ( peeked && peeked != asio::error::would_block )
         end();
   } );
}

void Session::answer( const Smbus::TransactionResponse &response, bool last ) {
   if ( client_->gone )
      return;
   waiting_ = false;
   error_code ignored;
   socket_.cancel( ignored );
   sending_ = Sockets::framed( response );
   asio::async_write( socket_, asio::buffer( sending_ ),
                      [this, last, self = shared_from_this()]( error_code error, size_t ) {
                         if ( error || last )
                            return end();
                         handleFrame();
                      } );
}

} // namespace Smbusd
