#include "host/serve/EventStream.h"

#include "host/journal/EventJson.h"
#include "host/serve/Events.h"

#include <array>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <fmt/format.h>

namespace Host {
namespace {

namespace http = boost::beast::http;
using boost::asio::local::stream_protocol;
using boost::beast::error_code;

constexpr size_t eventsAtATime = 100;

class EventStream : public std::enable_shared_from_this<EventStream> {
 public:
   EventStream( boost::beast::basic_stream<stream_protocol> connection, Events &events,
                const Journal::Query &query, const StreamLimits &limits,
                std::shared_ptr<void> open )
      : connection_( std::move( connection ) ), idle_( connection_.get_executor() ),
        events_( events ), query_( query ), limits_( limits ), open_( std::move( open ) ) {
      query_.limit = eventsAtATime;
   }

   void start() {
      listener_ = std::make_shared<Events::Listener>( [weak = weak_from_this()] {
         if ( const auto self = weak.lock(); self && !self->isWriting_ )
            self->sendNext();
      } );
      events_.tell( listener_ );
      connection_.expires_never();
      waitForItsEnd();
      sendHeader();
   }

 private:
   void sendHeader() {
      header_.set( http::field::content_type, "text/event-stream" );
      header_.set( http::field::cache_control, "no-cache" );
      header_.keep_alive( false );
      isWriting_ = true;
      connection_.expires_after( limits_.write );
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
      std::string text;
      for ( const Health::Event &event : events_.events( query_ ) ) {
         text += fmt::format( "id: {}\nevent: {}\ndata: {}\n\n", event.id, nameOf( event.what ),
                              toJson( event ) );
         query_.after = event.id;
      }
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
      connection_.expires_after( limits_.write );
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
      listener_.reset();
      idle_.cancel();
      connection_.close();
   }

   boost::beast::basic_stream<stream_protocol> connection_;
   boost::asio::steady_timer idle_;
   Events &events_;
   Journal::Query query_; // of what was not sent yet
   const StreamLimits limits_;
   const std::shared_ptr<void> open_;
   std::shared_ptr<Events::Listener> listener_{};
   http::response<http::empty_body> header_{ http::status::ok, 11 };
   http::response_serializer<http::empty_body> serializer_{ header_ };
   std::array<char, 256> ignored_{};
   std::string text_{};
   bool isWriting_ = false;
};

} // namespace

void streamEvents( boost::beast::basic_stream<stream_protocol> connection, Events &events,
                   const Journal::Query &query, const StreamLimits &limits,
                   std::shared_ptr<void> open ) {
   std::make_shared<EventStream>( std::move( connection ), events, query, limits,
                                  std::move( open ) )
      ->start();
}

} // namespace Host
