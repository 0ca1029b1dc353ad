// The server at an address of this machine. Requests are plain bytes.
#include "http/Server.h"

#include "PrivateFolder.h"

#include <array>
#include <boost/asio.hpp>
#include <fstream>
#include <gmock/gmock.h>
#include <unistd.h>

namespace Http {
namespace {

using boost::asio::ip::tcp;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class TcpServerTest : public ::testing::Test {
 protected:
   void serve( Guard guard = {} ) {
      server_.emplace(
         loop_, Listener::atAddress( "127.0.0.1:0", false ),
         [this]( const Request &request, const Reply &reply ) {
            asked_ = request;
            reply( answer_ );
         },
         Limits(), std::move( guard ) );
   }
   // What the server answers to these lines.
   std::string say( const std::string &lines ) {
      const std::string &name = server_->name();
      tcp::socket socket( loop_ );
      socket.connect(
         { boost::asio::ip::make_address( "127.0.0.1" ),
           static_cast<uint16_t>( std::stoi( name.substr( name.find( ':' ) + 1 ) ) ) } );
      boost::asio::write( socket, boost::asio::buffer( lines + "\r\nConnection: close\r\n\r\n" ) );
      std::string heard;
      bool hasEnded = false;
      boost::asio::async_read( socket, boost::asio::dynamic_buffer( heard ),
                               [&]( const auto &, size_t ) { hasEnded = true; } );
      const auto end = std::chrono::steady_clock::now() + std::chrono::seconds( 20 );
      while ( !hasEnded && std::chrono::steady_clock::now() < end )
         loop_.run_one_for( std::chrono::seconds( 1 ) );
      EXPECT_TRUE( hasEnded ) << heard;
      return heard;
   }

   const TestSupport::PrivateFolder folder_;
   boost::asio::io_context loop_{ 1 };
   Request asked_;
   Response answer_{ .body = "hello", .contentType = "text/plain" };
   std::optional<Server> server_;
};

TEST_F( TcpServerTest, AnswersWithTheHeadersThatKeepAnswersApart ) {
   serve();
   const std::string answer = say( "GET /a/b?c=d HTTP/1.1\r\nHost: localhost\r\nAccept: text/csv" );
   EXPECT_THAT( answer, StartsWith( "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\n"
                                    "Cache-Control: no-store\r\n"
                                    "X-Content-Type-Options: nosniff\r\n" ) );
   EXPECT_THAT( answer, ::testing::EndsWith( "\r\n\r\nhello" ) );
   EXPECT_EQ( asked_.method, "GET" );
   EXPECT_EQ( asked_.path, "/a/b" );
   EXPECT_EQ( asked_.query, "c=d" );
   EXPECT_EQ( asked_.accept, "text/csv" );
}

TEST_F( TcpServerTest, APathIsDecodedAndMayHaveTheHostBeforeIt ) {
   serve();
   say( "GET /v1/objects/fan%201+%C3%A9?a=%20 HTTP/1.1\r\nHost: localhost" );
   EXPECT_EQ( asked_.path, "/v1/objects/fan 1+\xc3\xa9" );
   EXPECT_EQ( asked_.query, "a=%20" );
   say( "GET http://localhost:80/a?b HTTP/1.1\r\nHost: localhost" );
   EXPECT_EQ( asked_.path, "/a" );
   EXPECT_THAT( say( "GET /a%2 HTTP/1.1\r\nHost: localhost" ),
                AllOf( StartsWith( "HTTP/1.1 400 " ), HasSubstr( "the path is not valid" ) ) );
}

TEST_F( TcpServerTest, AHeadIsAGetWithoutABody ) {
   serve();
   const std::string answer = say( "HEAD / HTTP/1.1\r\nHost: localhost" );
   EXPECT_EQ( asked_.method, "GET" );
   EXPECT_THAT( answer, HasSubstr( "Content-Length: 5\r\n" ) );
   EXPECT_THAT( answer, ::testing::EndsWith( "\r\n\r\n" ) );
}

TEST_F( TcpServerTest, RefusesWhoMustNotAsk ) {
   serve();
   EXPECT_THAT( say( "GET / HTTP/1.1\r\nHost: example.com" ), HasSubstr( "HTTP/1.1 421 " ) );
   EXPECT_THAT( say( "GET / HTTP/1.1\r\nHost: localhost\r\nOrigin: http://example.com" ),
                HasSubstr( "HTTP/1.1 403 " ) );
   EXPECT_THAT( say( "POST / HTTP/1.1\r\nHost: localhost" ), HasSubstr( "HTTP/1.1 403 " ) );
   EXPECT_EQ( asked_.method, "" ); // nobody was asked
}

TEST_F( TcpServerTest, LetsWhoHasTheTokenAct ) {
   const std::string path = folder_.file( "token" );
   std::ofstream( path ) << "0123456789abcdef";
   std::filesystem::permissions( path, std::filesystem::perms::owner_read );
   serve( Guard( path ) );
   const std::string post = "POST / HTTP/1.1\r\nHost: localhost\r\nContent-Length: 0";
   EXPECT_THAT( say( post ), HasSubstr( "HTTP/1.1 401 Unauthorized\r\n" ) );
   EXPECT_THAT( say( post ), HasSubstr( "WWW-Authenticate: Bearer\r\n" ) );
   EXPECT_THAT( say( post + "\r\nAuthorization: Bearer 0123456789abcdef" ),
                HasSubstr( "HTTP/1.1 200 OK" ) );
   EXPECT_EQ( asked_.method, "POST" );
}

TEST_F( TcpServerTest, AnAnswersOwnHeadersAreAddedOrReplaceTheUsualOnes ) {
   answer_.headers = { { "ETag", "\"1\"" }, { "Cache-Control", "no-cache" } };
   serve();
   const std::string answer = say( "GET / HTTP/1.1\r\nHost: localhost\r\nIf-None-Match: \"2\"" );
   EXPECT_THAT( answer, HasSubstr( "\r\nETag: \"1\"\r\n" ) );
   EXPECT_THAT( answer, HasSubstr( "\r\nCache-Control: no-cache\r\n" ) );
   EXPECT_THAT( answer, Not( HasSubstr( "no-store" ) ) );
   EXPECT_THAT( answer, HasSubstr( "\r\nX-Content-Type-Options: nosniff\r\n" ) );
   EXPECT_EQ( asked_.ifNoneMatch, "\"2\"" );
}

TEST_F( TcpServerTest, WhatIsNotModifiedHasNoContent ) {
   answer_ = { .status = Status::notModified, .headers = { { "ETag", "\"1\"" } } };
   serve();
   for ( const std::string method : { "GET", "HEAD" } ) {
      const std::string answer = say( method + " / HTTP/1.1\r\nHost: localhost" );
      EXPECT_THAT( answer, StartsWith( "HTTP/1.1 304 Not Modified\r\n" ) );
      EXPECT_THAT( answer, HasSubstr( "\r\nETag: \"1\"\r\n" ) );
      EXPECT_THAT( answer, Not( HasSubstr( "Content-Length" ) ) );
      EXPECT_THAT( answer, ::testing::EndsWith( "\r\n\r\n" ) );
   }
}

// The server at a Unix socket, which this process asks as another user than the server's.
class LocalServerTest : public TcpServerTest {
 protected:
   LocalServerTest() {
      std::filesystem::permissions( folder_.path(), std::filesystem::perms::all );
   }
   std::string ask( const std::string &method, const Sockets::ControlGroup &group ) {
      const std::string path = folder_.file( "socket" );
      asked_ = {};
      Server server(
         loop_, Listener::atFile( path ),
         [this]( const Request &request, const Reply &reply ) {
            asked_ = request;
            reply( answer_ );
         },
         Limits(), Guard(), group );
      std::filesystem::permissions( path, std::filesystem::perms::all );
      boost::asio::local::stream_protocol::socket socket( loop_ );
      const bool isRoot = geteuid() == 0;
      EXPECT_TRUE( !isRoot || seteuid( nobody ) == 0 );
      socket.connect( path );
      EXPECT_TRUE( !isRoot || seteuid( 0 ) == 0 );
      boost::asio::write( socket,
                          boost::asio::buffer( method + " / HTTP/1.1\r\nHost: x\r\nContent-Length: "
                                                        "0\r\nConnection: close\r\n\r\n" ) );
      std::string heard;
      bool hasEnded = false;
      boost::asio::async_read( socket, boost::asio::dynamic_buffer( heard ),
                               [&]( const auto &, size_t ) { hasEnded = true; } );
      while ( !hasEnded )
         loop_.run_one_for( std::chrono::seconds( 1 ) );
      return heard;
   }
   static constexpr uid_t nobody = 65534;
   const uid_t user_ = geteuid() == 0 ? nobody : geteuid(); // who asks
};

TEST_F( LocalServerTest, WhoeverCanConnectMayRead ) {
   for ( const std::string method : { "GET", "HEAD" } ) {
      EXPECT_THAT( ask( method, Sockets::ControlGroup( "", user_ + 1 ) ),
                   StartsWith( "HTTP/1.1 200 OK" ) );
      EXPECT_EQ( asked_.method, "GET" );
   }
}

TEST_F( LocalServerTest, WhoIsNotOfTheControlGroupMayNotAct ) {
   for ( const std::string method : { "POST", "PUT", "DELETE" } ) {
      const std::string answer = ask( method, Sockets::ControlGroup( "", user_ + 1 ) );
      EXPECT_THAT( answer, StartsWith( "HTTP/1.1 403 Forbidden" ) );
      EXPECT_THAT( answer, HasSubstr( R"({"error":"user )" + Sockets::nameOf( user_ ) +
                                      " may only read here" ) );
      EXPECT_EQ( asked_.method, "" ); // nobody was asked
   }
}

TEST_F( LocalServerTest, TheUserOfTheServerMayAct ) {
   EXPECT_THAT( ask( "POST", Sockets::ControlGroup( "", user_ ) ),
                StartsWith( "HTTP/1.1 200 OK" ) );
   EXPECT_EQ( asked_.method, "POST" );
}

// Has nothing to tell.
class Silence : public Stream {
 public:
   void start( std::function<void()> ) override {}
   std::string next() override { return ""; }
};

class StreamServerTest : public TcpServerTest {
 protected:
   void serveStreams( const Limits &limits ) {
      server_.emplace(
         loop_, Listener::atAddress( "127.0.0.1:0", false ),
         []( const Request &request, const Reply &reply ) {
            if ( request.path == "/stream" )
               reply( { .stream = std::make_shared<Silence>() } );
            else
               reply( { .body = "hello" } );
         },
         limits );
   }
   // Opens a stream, and waits until it has begun.
   void open() {
      const std::string &name = server_->name();
      open_.emplace_back( loop_ ).connect(
         { boost::asio::ip::make_address( "127.0.0.1" ),
           static_cast<uint16_t>( std::stoi( name.substr( name.find( ':' ) + 1 ) ) ) } );
      boost::asio::write( open_.back(), boost::asio::buffer( std::string( stream ) ) );
      std::array<char, 12> status{};
      bool hasCome = false;
      boost::asio::async_read( open_.back(), boost::asio::buffer( status ),
                               [&]( const auto &, size_t ) { hasCome = true; } );
      for ( int tries = 0; !hasCome && tries < 20; ++tries )
         loop_.run_one_for( std::chrono::seconds( 1 ) );
      EXPECT_EQ( std::string( status.data(), status.size() ), "HTTP/1.1 200" );
   }
   static constexpr auto stream = "GET /stream HTTP/1.1\r\nHost: localhost\r\n\r\n";
   std::vector<tcp::socket> open_;
};

TEST_F( StreamServerTest, LeavesRoomForOthers ) {
   serveStreams( { .streams = 2 } );
   for ( int i = 0; i < 2; ++i )
      open();
   EXPECT_THAT( say( "GET /stream HTTP/1.1\r\nHost: localhost" ),
                HasSubstr( "too many streams of events" ) );
   EXPECT_THAT( say( "GET / HTTP/1.1\r\nHost: localhost" ), HasSubstr( "200 OK" ) );
   open_.clear(); // the server hears of it
   std::string last;
   for ( int tries = 0; tries < 100 && last.find( "200 OK" ) == std::string::npos; ++tries )
      last = say( "HEAD /stream HTTP/1.1\r\nHost: localhost" );
   EXPECT_THAT( last, HasSubstr( "Content-Type: text/event-stream" ) );
}

// Each page has one, and a browser opens five connections more.
TEST_F( StreamServerTest, TwentyPagesOfFourBrowsersHaveRoom ) {
   serveStreams( {} );
   for ( int i = 0; i < 64; ++i )
      open();
   EXPECT_THAT( say( "GET /stream HTTP/1.1\r\nHost: localhost" ), HasSubstr( "503" ) );
   std::vector<tcp::socket> others;
   const auto endpoint = open_.front().remote_endpoint();
   for ( int i = 0; i < 63; ++i )
      others.emplace_back( loop_ ).connect( endpoint );
   EXPECT_THAT( say( "GET / HTTP/1.1\r\nHost: localhost" ), HasSubstr( "200 OK" ) );
   others.emplace_back( loop_ ).connect( endpoint );
   EXPECT_THAT( say( "GET / HTTP/1.1\r\nHost: localhost" ), HasSubstr( "too many connections" ) );
}

// Has always more to tell.
class Plenty : public Stream {
 public:
   explicit Plenty( size_t &told ) : told_( told ) {}
   void start( std::function<void()> ) override {}
   std::string next() override {
      told_ += 50'000;
      return std::string( 50'000, 'x' );
   }

 private:
   size_t &told_;
};

// What waits in the system's buffers is old when it comes, and takes memory.
TEST_F( TcpServerTest, LittleWaitsForAClientThatTakesNothing ) {
   size_t told = 0;
   server_.emplace( loop_, Listener::atAddress( "127.0.0.1:0", false ),
                    [&told]( const Request &, const Reply &reply ) {
                       reply( { .stream = std::make_shared<Plenty>( told ) } );
                    } );
   const std::string &name = server_->name();
   tcp::socket client( loop_, tcp::v4() );
   client.set_option( boost::asio::socket_base::receive_buffer_size( 4096 ) );
   client.connect( { boost::asio::ip::make_address( "127.0.0.1" ),
                     static_cast<uint16_t>( std::stoi( name.substr( name.find( ':' ) + 1 ) ) ) } );
   boost::asio::write(
      client, boost::asio::buffer( std::string( "GET / HTTP/1.1\r\nHost: localhost\r\n\r\n" ) ) );
   size_t before = 0;
   do {
      before = told;
      loop_.run_for( std::chrono::milliseconds( 100 ) );
   } while ( told == 0 || told != before );
   EXPECT_LT( told, 500'000u );
}

} // namespace
} // namespace Http
