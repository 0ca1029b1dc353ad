#include "http/Connection.h"

#include "http/Query.h"
#include "http/StreamSender.h"

#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>

#include <algorithm>
#include <utility>

namespace Http {

namespace {

namespace http = boost::beast::http;
using boost::beast::error_code;
using Protocol = boost::asio::generic::stream_protocol;

// The answer to a request that can't be read. Nothing when the client just disconnected.
std::optional<Response> errorOf( const error_code &failure ) {
   if ( failure == http::error::body_limit )
      return errorResponse( Status::contentTooLarge, "the body is too long" );
   if ( failure == http::error::header_limit )
      return errorResponse( Status::headerTooLarge, "the header is too long" );
   if ( failure.category() == error_code( http::error::bad_method ).category() &&
        failure != http::error::end_of_stream && failure != http::error::partial_message )
      return errorResponse( Status::badRequest, failure.message() );
   return {};
}

// "http://host/path" is "/path", as a server must take it, too (RFC 9112, 3.2.2).
std::string originForm( std::string target ) {
   constexpr std::string_view scheme = "http://";
   if ( !target.starts_with( scheme ) )
      return target;
   const size_t slash = target.find( '/', scheme.size() );
   return slash == target.npos ? "/" : target.substr( slash );
}

class Connection : public std::enable_shared_from_this<Connection> {
 public:
   Connection( Protocol::socket socket, Service service )
      : stream_( std::move( socket ) ), timeout_( stream_.get_executor() ),
        service_( std::move( service ) ) {}

   void read() {
      parser_.emplace();
      parser_->body_limit( service_.limits.body );
      parser_->header_limit( service_.limits.header );
      stream_.expires_after( service_.limits.idle );
      http::async_read( stream_, input_, *parser_,
                        [self = shared_from_this()]( const error_code &failure, size_t ) {
                           self->onRead( failure );
                        } );
   }
   void refuse() {
      keepAlive_ = false;
      write( errorResponse( Status::unavailable, "too many connections" ) );
   }

 private:
   void onRead( const error_code &failure ) {
      if ( !failure ) {
         handle();
      } else if ( const auto response = errorOf( failure ) ) {
         keepAlive_ = false;
         write( *response );
      }
   }

   std::string header( boost::beast::string_view name ) const {
      const auto value = parser_->get()[name];
      return std::string( value.data(), value.size() );
   }

   void handle() {
      const auto &request = parser_->get();
      keepAlive_ = request.keep_alive();
      isHead_ = request.method() == http::verb::head;
      const std::string method = isHead_ ? "GET" : std::string( request.method_string() );
      if ( service_.guard )
         if ( const auto refusal =
                 service_.guard->refusal( method, { .host = header( "Host" ),
                                                    .origin = header( "Origin" ),
                                                    .authorization = header( "Authorization" ) } ) )
            return write( *refusal );
      if ( method != "GET" && !service_.onlyReads.empty() )
         return write( errorResponse( Status::forbidden, service_.onlyReads ) );
      stream_.expires_never(); // an action may take long; timeout_ limits it
      const unsigned number = ++requests_;
      timeout_.expires_after( service_.limits.action );
      timeout_.async_wait( [self = shared_from_this(), number]( const error_code &failure ) {
         if ( !failure )
            self->reply( number,
                         errorResponse( Status::timedOut, "the object did not answer in time" ) );
      } );
      const std::string target = originForm( std::string( request.target() ) );
      const size_t question = std::min( target.find( '?' ), target.size() );
      const auto path = parsePath( target.substr( 0, question ) );
      if ( !path )
         return reply( number,
                       errorResponse( Status::badRequest,
                                      "the path is not valid: behind each % two hexadecimal digits "
                                      "are needed" ) );
      ( *service_.handler )( { .method = method,
                               .path = *path,
                               .body = request.body(),
                               .query = target.substr( std::min( question + 1, target.size() ) ),
                               .accept = header( "Accept" ),
                               .lastEventId = header( "Last-Event-ID" ),
                               .ifNoneMatch = header( "If-None-Match" ) },
                             [self = shared_from_this(), number]( const Response &response ) {
                                self->reply( number, response );
                             } );
   }

   // Sends the first answer to a request, and ignores any later one.
   void reply( unsigned number, const Response &response ) {
      if ( number != requests_ || answered_ == number )
         return;
      answered_ = number;
      timeout_.cancel();
      if ( !response.stream )
         return write( response );
      if ( isHead_ )
         return write( { .contentType = "text/event-stream" } );
      // Streams stay for long: there has to be room for others.
      const auto streams = service_.streams;
      if ( *streams >= service_.limits.streams )
         return write( errorResponse( Status::unavailable, "too many streams of events" ) );
      ++*streams;
      const std::shared_ptr<void> place(
         nullptr, [streams, open = service_.open]( void * ) { --*streams; } );
      send( std::move( stream_ ), response.stream, service_.limits, place );
   }

   // What these would tell is of the answer that the client has.
   void withoutContent() {
      response_.erase( http::field::content_length );
      response_.erase( http::field::content_type );
   }

   void write( const Response &response ) {
      response_ = {};
      response_.result( response.status );
      response_.version( 11 );
      response_.set( http::field::content_type, response.contentType );
      response_.set( http::field::cache_control, "no-store" );
      response_.set( "X-Content-Type-Options", "nosniff" );
      if ( !response.allow.empty() )
         response_.set( http::field::allow, response.allow );
      if ( response.status == Status::unauthorized )
         response_.set( http::field::www_authenticate, "Bearer" );
      for ( const auto &[name, value] : response.headers )
         response_.set( name, value );
      response_.keep_alive( keepAlive_ );
      response_.body() = response.body;
      response_.prepare_payload();
      if ( response.status == Status::notModified )
         withoutContent();
      serializer_.emplace( response_ );
      stream_.expires_after( service_.limits.idle );
      const auto written = [self = shared_from_this()]( const error_code &failure, size_t ) {
         if ( !failure && self->keepAlive_ )
            self->read();
         else // a pending action may keep this object alive
            self->stream_.close();
      };
      if ( isHead_ )
         http::async_write_header( stream_, *serializer_, written );
      else
         http::async_write( stream_, *serializer_, written );
   }

   boost::beast::basic_stream<Protocol> stream_;
   boost::asio::steady_timer timeout_;
   const Service service_;
   boost::beast::flat_buffer input_{};
   std::optional<http::request_parser<http::string_body>> parser_{};
   http::response<http::string_body> response_{};
   std::optional<http::response_serializer<http::string_body>> serializer_{};
   bool keepAlive_ = false;
   bool isHead_ = false;
   unsigned requests_ = 0;
   unsigned answered_ = 0;
};

} // namespace

void serve( Protocol::socket socket, Service service, bool tooMany ) {
   const auto connection =
      std::make_shared<Connection>( std::move( socket ), std::move( service ) );
   tooMany ? connection->refuse() : connection->read();
}

} // namespace Http
