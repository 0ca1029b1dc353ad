#include "host/serve/HttpServer.h"

#include "host/serve/EventStream.h"

#include <algorithm>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <fmt/format.h>
#include <optional>
#include <spdlog/spdlog.h>
#include <stdexcept>

namespace Host {
namespace {

namespace http = boost::beast::http;
using boost::asio::local::stream_protocol;
using boost::beast::error_code;

// The answer to a request that can't be read. Nothing when the client just disconnected.
std::optional<Api::Response> errorOf( const error_code &failure ) {
   if ( failure == http::error::body_limit )
      return errorResponse( HttpStatus::contentTooLarge, "the body is too long" );
   if ( failure == http::error::header_limit )
      return errorResponse( HttpStatus::headerTooLarge, "the header is too long" );
   if ( failure.category() == error_code( http::error::bad_method ).category() &&
        failure != http::error::end_of_stream && failure != http::error::partial_message )
      return errorResponse( HttpStatus::badRequest, failure.message() );
   return {};
}

// Whether the client accepts server-sent events, by the header Accept.
bool isEventStream( boost::beast::string_view accept ) {
   return std::string_view( accept.data(), accept.size() ).find( "text/event-stream" ) !=
          std::string_view::npos;
}

class Connection : public std::enable_shared_from_this<Connection> {
 public:
   Connection( stream_protocol::socket socket, const Api &api, const HttpLimits &limits,
               std::shared_ptr<void> open )
      : stream_( std::move( socket ) ), timeout_( stream_.get_executor() ), api_( api ),
        limits_( limits ), open_( std::move( open ) ) {}

   void read() {
      parser_.emplace();
      parser_->body_limit( limits_.body );
      parser_->header_limit( limits_.header );
      stream_.expires_after( limits_.idle );
      http::async_read( stream_, input_, *parser_,
                        [self = shared_from_this()]( const error_code &failure, size_t ) {
                           self->onRead( failure );
                        } );
   }
   void refuse() {
      keepAlive_ = false;
      write( errorResponse( HttpStatus::unavailable, "too many connections" ) );
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

   void handle() {
      const auto &request = parser_->get();
      keepAlive_ = request.keep_alive();
      stream_.expires_never(); // an action may take long; timeout_ limits it
      const unsigned number = ++requests_;
      timeout_.expires_after( limits_.action );
      timeout_.async_wait( [self = shared_from_this(), number]( const error_code &failure ) {
         if ( !failure )
            self->reply(
               number, errorResponse( HttpStatus::timedOut, "the object did not answer in time" ) );
      } );
      const std::string target( request.target() );
      const size_t question = std::min( target.find( '?' ), target.size() );
      api_.handle( { .method = std::string( request.method_string() ),
                     .path = target.substr( 0, question ),
                     .body = request.body(),
                     .query = target.substr( std::min( question + 1, target.size() ) ),
                     .wantsStream = isEventStream( request[http::field::accept] ),
                     .lastEventId = std::string( request["Last-Event-ID"] ) },
                   [self = shared_from_this(), number]( const Api::Response &response ) {
                      self->reply( number, response );
                   } );
   }

   // Sends the first answer to a request, and ignores any later one.
   void reply( unsigned number, const Api::Response &response ) {
      if ( number != requests_ || answered_ == number )
         return;
      answered_ = number;
      timeout_.cancel();
      if ( response.stream )
         streamEvents( std::move( stream_ ), api_.events(), *response.stream,
                       { .write = limits_.idle, .comment = limits_.comment }, open_ );
      else
         write( response );
   }

   void write( const Api::Response &response ) {
      response_ = {};
      response_.result( response.status );
      response_.version( 11 );
      response_.set( http::field::content_type, "application/json" );
      if ( !response.allow.empty() )
         response_.set( http::field::allow, response.allow );
      response_.keep_alive( keepAlive_ );
      response_.body() = response.json;
      response_.prepare_payload();
      stream_.expires_after( limits_.idle );
      http::async_write( stream_, response_,
                         [self = shared_from_this()]( const error_code &failure, size_t ) {
                            if ( !failure && self->keepAlive_ )
                               self->read();
                            else // a pending action may keep this object alive
                               self->stream_.close();
                         } );
   }

   boost::beast::basic_stream<stream_protocol> stream_;
   boost::asio::steady_timer timeout_;
   const Api &api_;
   const HttpLimits &limits_;
   const std::shared_ptr<void> open_; // counts it
   boost::beast::flat_buffer input_{};
   std::optional<http::request_parser<http::string_body>> parser_{};
   http::response<http::string_body> response_{};
   bool keepAlive_ = false;
   unsigned requests_ = 0;
   unsigned answered_ = 0;
};

Sockets::SocketFile listenAt( const std::filesystem::path &path ) {
   try {
      if ( path.has_parent_path() )
         std::filesystem::create_directories( path.parent_path() );
      return { path.string(), "" };
   } catch ( const std::exception &exception ) {
      throw std::runtime_error( fmt::format( "can't serve at {}", exception.what() ) );
   }
}

} // namespace

HttpServer::HttpServer( boost::asio::io_context &loop, const std::filesystem::path &socket,
                        const Api &api, HttpLimits limits )
   : file_( listenAt( socket ) ), api_( api ), limits_( limits ),
     acceptor_( loop, stream_protocol(), file_.release() ), pause_( loop ) {
   accept();
}

void HttpServer::accept() {
   acceptor_.async_accept( [this]( const error_code &failure, stream_protocol::socket socket ) {
      if ( failure == boost::asio::error::operation_aborted )
         return;
      if ( failure ) {
         acceptLater( failure.message() );
         return;
      }
      isPausing_ = false;
      backOff_.succeeded();
      const bool isFull = open_.use_count() > static_cast<long>( limits_.connections );
      const auto connection =
         std::make_shared<Connection>( std::move( socket ), api_, limits_, open_ );
      isFull ? connection->refuse() : connection->read();
      accept();
   } );
}

// Without free descriptors the next try would fail at once, too.
void HttpServer::acceptLater( const std::string &why ) {
   if ( !isPausing_ )
      spdlog::warn( "can't accept a client at {}: {}; it is tried again and again", file_.path(),
                    why );
   isPausing_ = true;
   backOff_.failed( Clock::now() );
   pause_.expires_at( backOff_.nextTry() );
   pause_.async_wait( [this]( const error_code &failure ) {
      if ( !failure )
         accept();
   } );
}

} // namespace Host
