#include "http/StreamSender.h"

#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>

#include <array>
#include <utility>

namespace Http {

namespace {

namespace http = boost::beast::http;
using boost::beast::error_code;
using Protocol = boost::asio::generic::stream_protocol;

class Sender : public std::enable_shared_from_this<Sender> {
 public:
   Sender( boost::beast::basic_stream<Protocol> connection, std::shared_ptr<Stream> stream,
           const Limits &limits, std::shared_ptr<void> open )
      : connection_( std::move( connection ) ), idle_( connection_.get_executor() ),
        stream_( std::move( stream ) ), limits_( limits ), open_( std::move( open ) ) {}

   void start() {
      stream_->start( [weak = weak_from_this()] {
         if ( const auto self = weak.lock(); self && !self->isWriting_ )
            self->sendNext();
      } );
      keepLittle();
      connection_.expires_never();
      waitForItsEnd();
      sendHeader();
   }

 private:
   // The system keeps megabytes for a client that is slow: minutes of what was new.
   void keepLittle() {
      error_code ignored;
      connection_.socket().set_option( boost::asio::socket_base::send_buffer_size( 64 * 1024 ),
                                       ignored );
   }

   void sendHeader() {
      header_.set( http::field::content_type, "text/event-stream" );
      header_.set( http::field::cache_control, "no-cache" );
      header_.keep_alive( false );
      isWriting_ = true;
      connection_.expires_after( limits_.idle );
      http::async_write_header( connection_, serializer_,
                                [self = shared_from_this()]( const error_code &failure, size_t ) {
                                   self->written( failure );
                                } );
   }

   // A client sends nothing more, so that only its end is to be heard.
   void waitForItsEnd() {
      connection_.async_read_some(
         boost::asio::buffer( ignored_ ),
         [self = shared_from_this()]( const error_code &failure, size_t ) {
            failure ? self->end() : self->waitForItsEnd();
         } );
   }

   void sendNext() {
      if ( !stream_ )
         return;
      std::string text = stream_->next();
      if ( text.empty() )
         commentLater();
      else
         send( std::move( text ) );
   }

   void commentLater() {
      idle_.expires_after( limits_.comment );
      idle_.async_wait( [self = shared_from_this()]( const error_code &failure ) {
         if ( !failure && !self->isWriting_ )
            self->send( ": no events\n\n" );
      } );
   }

   void send( std::string text ) {
      text_ = std::move( text );
      isWriting_ = true;
      idle_.cancel();
      connection_.expires_after( limits_.idle );
      boost::asio::async_write( connection_, boost::asio::buffer( text_ ),
                                [self = shared_from_this()]( const error_code &failure, size_t ) {
                                   self->written( failure );
                                } );
   }

   void written( const error_code &failure ) {
      isWriting_ = false;
      failure ? end() : sendNext();
   }

   void end() {
      stream_.reset();
      idle_.cancel();
      connection_.close();
   }

   boost::beast::basic_stream<Protocol> connection_;
   boost::asio::steady_timer idle_;
   std::shared_ptr<Stream> stream_;
   const Limits limits_;
   const std::shared_ptr<void> open_;
   http::response<http::empty_body> header_{ http::status::ok, 11 };
   http::response_serializer<http::empty_body> serializer_{ header_ };
   std::array<char, 256> ignored_{};
   std::string text_{};
   bool isWriting_ = false;
};

} // namespace

void send( boost::beast::basic_stream<Protocol> connection, std::shared_ptr<Stream> stream,
           const Limits &limits, std::shared_ptr<void> open ) {
   std::make_shared<Sender>( std::move( connection ), std::move( stream ), limits,
                             std::move( open ) )
      ->start();
}

} // namespace Http
