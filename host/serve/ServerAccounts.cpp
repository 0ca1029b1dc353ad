#include "host/serve/ServerAccounts.h"

#include "smbus/BusLoads.h"

#include <array>
#include <boost/asio.hpp>
#include <memory>
#include <sockets/Frames.h>
#include <sockets/Unreachable.h>

namespace Host {
namespace {

using boost::asio::local::stream_protocol;
using boost::system::error_code;

// One question, on a connection of its own. It lives as long as it has to call back.
class Question : public std::enable_shared_from_this<Question> {
 public:
   Question( boost::asio::io_context &loop, std::string path, ServerAccounts::Answer answer )
      : path_( std::move( path ) ), socket_( loop ), limit_( loop ),
        answer_( std::move( answer ) ) {}

   void ask( std::chrono::milliseconds limit ) {
      limit_.expires_after( limit );
      limit_.async_wait( [self = shared_from_this()]( const error_code &failure ) {
         if ( !failure )
            self->end( {}, self->path_ + ": no answer in time" );
      } );
      socket_.async_connect( path_, [self = shared_from_this()]( const error_code &failure ) {
         failure ? self->end( {}, Sockets::whyUnreachable( self->path_, failure.value() ) )
                 : self->send();
      } );
   }

 private:
   void send() {
      SmbusControl::Request request;
      request.set_load( true );
      bytes_ = Sockets::framed( request );
      boost::asio::async_write( socket_, boost::asio::buffer( bytes_ ),
                                [self = shared_from_this()]( const error_code &failure, size_t ) {
                                   self->bytes_.clear();
                                   failure ? self->end( {}, self->path_ + ": " + failure.message() )
                                           : self->receive();
                                } );
   }
   void receive() {
      socket_.async_read_some(
         boost::asio::buffer( chunk_ ),
         [self = shared_from_this()]( const error_code &failure, size_t count ) {
            if ( failure )
               return self->end( {}, self->path_ + ": " + failure.message() );
            self->bytes_.append( self->chunk_.data(), count );
            self->take();
         } );
   }
   void take() {
      const Sockets::Frame frame = Sockets::firstFrame( bytes_ );
      if ( frame.state == Sockets::Frame::State::Incomplete )
         return receive();
      SmbusControl::Response response;
      if ( frame.state != Sockets::Frame::State::Whole ||
           !response.ParseFromArray( frame.message.data(),
                                     static_cast<int>( frame.message.size() ) ) )
         return end( {}, path_ + ": the answer is not valid" );
      if ( !response.error().empty() )
         return end( {}, path_ + ": " + response.error() );
      end( Bus::loadsAsJson( {}, response ), {} );
   }
   // What comes after the first end counts no more.
   void end( std::string json, std::string error ) {
      limit_.cancel();
      error_code ignored;
      socket_.close( ignored );
      if ( const auto answer = std::exchange( answer_, {} ) )
         answer( std::move( json ), std::move( error ) );
   }

   const std::string path_;
   stream_protocol::socket socket_;
   boost::asio::steady_timer limit_;
   ServerAccounts::Answer answer_;
   std::string bytes_{};
   std::array<char, 16384> chunk_{};
};

} // namespace

void ServerAccounts::ask( Answer answer ) const {
   if ( serverSocket_.empty() )
      return answer( {}, "the plug-in's data does not name its server's socket" );
   try {
      std::make_shared<Question>( loop_, serverSocket_ + ".control", answer )->ask( limit_ );
   } catch ( const boost::system::system_error &wrong ) { // the path can't be that of a socket
      answer( {}, serverSocket_ + ".control: " + wrong.code().message() );
   }
}

} // namespace Host
