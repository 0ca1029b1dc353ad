#include "host/serve/EventsClient.h"

#include "boardfiles/Json.h"
#include "host/JsonWriter.h"
#include "host/journal/EventJson.h"

#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <sockets/Unreachable.h>

namespace Host {
namespace {

namespace http = boost::beast::http;
using boost::asio::local::stream_protocol;
using boost::beast::error_code;

constexpr std::chrono::seconds answerLimit( 10 );
constexpr std::chrono::seconds pauseBetweenTries( 1 );

// The member "error" of an answer; or that there is none.
std::optional<BoardFiles::Json> answerIn( const std::optional<std::string> &text,
                                          std::string &error ) {
   BoardFiles::Findings findings;
   auto json = text ? BoardFiles::parseJson( *text, "answer", findings ) : std::nullopt;
   error = json ? json->textOf( "error" ).value_or( "" ) : "serve did not answer";
   return json;
}

} // namespace

std::optional<std::vector<Health::Event>> eventsOf( const Client &serve, const std::string &query,
                                                    std::string &error ) {
   const auto answer =
      answerIn( serve.call( false, "/v1/events?" + query, {}, answerLimit ), error );
   if ( !error.empty() )
      return {};
   std::vector<Health::Event> events;
   for ( const BoardFiles::Json &json : answer->elementsOf( "events" ) )
      if ( auto event = toEvent( json ) )
         events.push_back( std::move( *event ) );
   return events;
}

std::string acknowledge( const Client &serve, const std::string &cause ) {
   const std::string body = JsonWriter().beginObject().member( "cause", cause ).endObject().text();
   std::string error;
   answerIn( serve.call( true, "/v1/acknowledge", body, answerLimit ), error );
   return error;
}

// Makes one connection after another.
class FollowedEvents::Connection : public std::enable_shared_from_this<Connection> {
 public:
   Connection( boost::asio::io_context &loop, std::filesystem::path socket, std::string query,
               uint64_t after, Handlers handlers )
      : socket_( std::move( socket ) ), query_( std::move( query ) ), last_( after ),
        handlers_( std::move( handlers ) ), stream_( loop ), pause_( loop ) {}

   void open() {
      input_.clear();
      text_.clear();
      parser_.emplace();
      parser_->body_limit( boost::none );
      request_ = { http::verb::get, "/v1/events?" + query_, 11 };
      request_.set( http::field::host, "orbis-host" );
      request_.set( http::field::accept, "text/event-stream" );
      request_.set( "Last-Event-ID", std::to_string( last_ ) );
      stream_ = stream_protocol::socket( pause_.get_executor() );
      stream_.async_connect(
         socket_.string(), [self = shared_from_this()]( const error_code &failure ) {
            if ( failure )
               self->lose( Sockets::whyUnreachable( self->socket_, failure.value() ) );
            else
               http::async_write( self->stream_, self->request_,
                                  self->then( &Connection::readHeader ) );
         } );
   }

 private:
   // Does it if there was no failure; keeps this object until then.
   std::function<void( const error_code &, size_t )> then( void ( Connection::*what )() ) {
      return [self = shared_from_this(), what]( const error_code &failure, size_t ) {
         failure ? self->lose( self->socket_.string() + ": " + failure.message() )
                 : ( self.get()->*what )();
      };
   }

   void readHeader() {
      http::async_read_header( stream_, input_, *parser_, then( &Connection::beginToRead ) );
   }
   void beginToRead() {
      if ( parser_->get().result() != http::status::ok )
         return lose( socket_.string() + ": " + std::string( parser_->get().reason() ) );
      isLost_ = false;
      readMore();
   }
   void readMore() {
      http::async_read_some( stream_, input_, *parser_, then( &Connection::take ) );
   }
   // Of an event only the line with its data is needed.
   void take() {
      text_ += std::exchange( parser_->get().body(), {} );
      size_t begin = 0;
      for ( size_t end = 0; ( end = text_.find( '\n', begin ) ) != text_.npos; begin = end + 1 )
         takeLine( text_.substr( begin, end - begin ) );
      text_.erase( 0, begin );
      parser_->is_done() ? lose( socket_.string() + ": it has ended" ) : readMore();
   }
   void takeLine( const std::string &line ) {
      constexpr std::string_view data = "data: ";
      const auto event =
         line.starts_with( data ) ? readEvent( line.substr( data.size() ) ) : std::nullopt;
      if ( !event )
         return;
      last_ = event->id;
      handlers_.heard( *event );
   }
   void lose( const std::string &why ) {
      if ( !std::exchange( isLost_, true ) )
         handlers_.lost( why );
      pause_.expires_after( pauseBetweenTries );
      pause_.async_wait( [self = shared_from_this()]( const error_code &failure ) {
         if ( !failure )
            self->open();
      } );
   }

   const std::filesystem::path socket_;
   const std::string query_;
   uint64_t last_;
   const Handlers handlers_;
   stream_protocol::socket stream_;
   boost::asio::steady_timer pause_;
   http::request<http::empty_body> request_{};
   boost::beast::flat_buffer input_{};
   std::optional<http::response_parser<http::string_body>> parser_{};
   std::string text_{};
   bool isLost_ = false;
};

FollowedEvents::FollowedEvents( boost::asio::io_context &loop, std::filesystem::path socket,
                                std::string query, uint64_t after, Handlers handlers )
   : connection_( std::make_shared<Connection>( loop, std::move( socket ), std::move( query ),
                                                after, std::move( handlers ) ) ) {
   connection_->open();
}

} // namespace Host
