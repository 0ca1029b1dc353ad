#include "host/serve/Client.h"

#include "boardfiles/Json.h"
#include "host/JsonReader.h"
#include "host/JsonWriter.h"
#include "host/serve/ModuleJson.h"
#include "host/serve/WhyJson.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <sockets/SocketFile.h>
#include <sockets/Unreachable.h>
#include <spdlog/spdlog.h>

namespace Host {
namespace {

namespace http = boost::beast::http;
using boost::asio::local::stream_protocol;
using boost::beast::error_code;

constexpr std::chrono::seconds reportLimit( 5 );

constexpr uint64_t longestAnswer = 16 * 1024 * 1024;

// A request on a connection of its own; it lives until it is answered or late.
class Question : public std::enable_shared_from_this<Question> {
 public:
   Question( boost::asio::io_context &loop, bool isPost, const std::string &path,
             const std::string &body, Client::Answer answer )
      : stream_( loop ), request_( isPost ? http::verb::post : http::verb::get, path, 11 ),
        answer_( std::move( answer ) ) {
      request_.set( http::field::host, "orbis-host" );
      request_.keep_alive( false );
      request_.body() = body;
      request_.prepare_payload();
      response_.body_limit( longestAnswer );
   }

   void ask( const std::filesystem::path &socket, std::chrono::milliseconds limit ) {
      stream_.expires_after( limit );
      stream_.async_connect( stream_protocol::endpoint( socket.string() ),
                             [self = shared_from_this()]( error_code failed ) {
                                failed ? self->answer_( {} ) : self->send();
                             } );
   }

 private:
   void send() {
      http::async_write( stream_, request_,
                         [self = shared_from_this()]( error_code failed, size_t ) {
                            failed ? self->answer_( {} ) : self->receive();
                         } );
   }
   void receive() {
      http::async_read( stream_, input_, response_,
                        [self = shared_from_this()]( error_code failed, size_t ) {
                           self->stream_.cancel();
                           if ( failed )
                              self->answer_( {} );
                           else
                              self->answer_( std::move( self->response_.get().body() ) );
                        } );
   }

   boost::beast::basic_stream<stream_protocol> stream_;
   http::request<http::string_body> request_;
   boost::beast::flat_buffer input_{};
   http::response_parser<http::string_body> response_{};
   Client::Answer answer_;
};

} // namespace

std::filesystem::path serveSocket() {
   const char *path = std::getenv( "ORBIS_HOST_SOCKET" );
   return path && *path ? path : "/run/orbis/host.sock";
}

std::filesystem::path serveEvents() { return serveSocket().replace_extension( ".events" ); }

std::string serveName( const std::filesystem::path &board ) {
   return std::filesystem::canonical( board ).string();
}

std::optional<Client> Client::ofBoard( const std::filesystem::path &folder ) {
   const Client client( serveSocket() );
   std::string board;
   if ( client.report( &board ) && board == serveName( folder ) )
      return client;
   if ( Sockets::tryToConnect( client.socket() ) == EACCES )
      spdlog::warn( "a serve can't be asked: {}",
                    Sockets::whyUnreachable( client.socket(), EACCES ) );
   return {};
}

std::optional<BoardReport> Client::report( std::string *board ) const {
   const auto answer = call( false, "/v1/board", {}, reportLimit );
   auto known = answer ? readBoard( *answer ) : std::nullopt;
   if ( !known )
      return {};
   if ( board )
      *board = known->board;
   return std::move( known->objects );
}

std::optional<HealthReport> Client::health() const {
   const auto answer = call( false, "/v1/health", {}, reportLimit );
   return answer ? readHealth( *answer ) : std::nullopt;
}

std::optional<Why> Client::why( const std::string &object ) const {
   const auto answer = call( false, "/v1/objects/" + object + "/why", {}, reportLimit );
   return answer ? readWhy( *answer ) : std::nullopt;
}

std::optional<CageModule> Client::module( const std::string &cage ) const {
   const auto answer = call( false, "/v1/modules/" + cage, {}, reportLimit );
   return answer ? readModule( *answer ) : std::nullopt;
}

std::optional<std::vector<CageModule>> Client::modules() const {
   const auto answer = call( false, "/v1/modules", {}, reportLimit );
   return answer ? readModules( *answer ) : std::nullopt;
}

Reading Client::act( const std::string &object, const std::vector<std::string> &words,
                     std::chrono::milliseconds limit ) const {
   JsonWriter body;
   body.beginObject().key( "words" ).beginList();
   for ( const std::string &word : words )
      body.value( word );
   body.endList().endObject();
   const auto answer = call( true, "/v1/objects/" + object + "/action", body.text(), limit );
   BoardFiles::Findings findings;
   const auto json = answer ? BoardFiles::parseJson( *answer, "answer", findings ) : std::nullopt;
   if ( !json )
      return { .state = State::Unreadable, .fault = { .words = "serve did not answer" } };
   if ( const auto error = json->textOf( "error" ) )
      return { .state = State::Unreadable, .fault = { .words = *error } };
   return toReading( *json );
}

std::optional<std::string> Client::call( bool isPost, const std::string &path,
                                         const std::string &body,
                                         std::chrono::milliseconds limit ) const {
   boost::asio::io_context loop{ 1 };
   std::optional<std::string> answered;
   std::make_shared<Question>( loop, isPost, path, body, [&answered]( auto answer ) {
      answered = std::move( answer );
   } )->ask( socket_, limit );
   loop.run();
   return answered;
}

void Client::ask( boost::asio::io_context &loop, const std::string &path, Answer answer ) const {
   std::make_shared<Question>( loop, false, path, "", std::move( answer ) )
      ->ask( socket_, reportLimit );
}

} // namespace Host
