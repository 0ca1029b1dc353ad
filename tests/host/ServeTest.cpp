#include "NoDescriptors.h"
#include "host/serve/Client.h"
#include "host/serve/Events.h"
#include "support/ApiServer.h"
#include "support/NoRights.h"
#include "support/ScriptedHost.h"

#include <boost/asio.hpp>
#include <csignal>
#include <gmock/gmock.h>
#include <sys/stat.h>

namespace Host {
namespace {

using boost::asio::local::stream_protocol;
using ::testing::HasSubstr;
using ::testing::Not;

// The server on a socket of the test. Requests are plain bytes.
class HttpServerTest : public ::testing::Test {
 protected:
   void serve( Http::Limits limits = {} ) { server_.emplace( loop_, path_, api_, limits ); }
   // Why a server can't start at the test's path.
   std::string refusal() {
      try {
         ApiServer( loop_, path_, api_ );
      } catch ( const std::runtime_error &error ) {
         return error.what();
      }
      return "it starts";
   }

   // Sends bytes on a new connection, and returns what the server sends until it closes it.
   std::string say( const std::string &bytes ) {
      stream_protocol::socket socket( loop_ );
      socket.connect( path_.string() );
      boost::asio::write( socket, boost::asio::buffer( bytes ) );
      std::string heard;
      bool ended = false;
      boost::asio::async_read( socket, boost::asio::dynamic_buffer( heard ),
                               [&ended]( const auto &, size_t ) { ended = true; } );
      const auto end = std::chrono::steady_clock::now() + std::chrono::seconds( 20 );
      while ( !ended && std::chrono::steady_clock::now() < end )
         loop_.run_one_for( std::chrono::seconds( 1 ) );
      EXPECT_TRUE( ended ) << heard;
      return heard;
   }
   std::string get( const std::string &path ) {
      return say( "GET " + path + " HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n" );
   }

   const TestSupport::PrivateFolder folder_;
   const std::filesystem::path path_ = folder_.path() / "host.sock";
   boost::asio::io_context loop_{ 1 };
   const BoardFiles::Board board_{
      .topology = "[]", .objects = { { .kind = BoardFiles::Kind::Led, .name = "led" } }
   };
   std::vector<std::function<void( const Reading & )>> unanswered_;
   Events events_{ folder_.path() / "host.events", []( const auto & ) { return true; } };
   const Api api_{ board_,
                   "b",
                   { .report = [] { return BoardReport{ { .name = "led", .type = "led" } }; },
                     .ask = [this]( size_t, const Action &,
                                    auto answer ) { unanswered_.push_back( answer ); },
                     .events = &events_ } };
   std::optional<ApiServer> server_;
};

TEST_F( HttpServerTest, AnswersOneRequestAfterAnotherOnAConnection ) {
   serve();
   const std::string answer = say( "GET /v1/topology HTTP/1.1\r\nHost: x\r\n\r\n"
                                   "GET /v1/nothing?x=1 HTTP/1.1\r\nHost: x\r\n"
                                   "Connection: close\r\n\r\n" );
   EXPECT_THAT( answer, HasSubstr( "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n" ) );
   EXPECT_THAT( answer, HasSubstr( "HTTP/1.1 404 Not Found" ) );
   EXPECT_THAT( answer, HasSubstr( R"({"error":"no such path: /v1/nothing"})" ) );
}

TEST_F( HttpServerTest, NamesTheMethodOfAPath ) {
   serve();
   EXPECT_THAT( say( "PUT /v1/board HTTP/1.0\r\n\r\n" ), HasSubstr( "Allow: GET\r\n" ) );
}

TEST_F( HttpServerTest, RefusesWhatIsTooLongOrNotHttp ) {
   serve();
   EXPECT_THAT( say( "POST /v1/objects/led/action HTTP/1.1\r\nContent-Length: 65537\r\n\r\n" ),
                HasSubstr( "HTTP/1.1 413" ) );
   EXPECT_THAT( say( "GET / HTTP/1.1\r\nX: " + std::string( 9000, 'x' ) + "\r\n\r\n" ),
                HasSubstr( "HTTP/1.1 431" ) );
   EXPECT_THAT( say( "what?\r\n\r\n" ), HasSubstr( "HTTP/1.1 400" ) );
}

TEST_F( HttpServerTest, AnswersAQuery ) {
   serve();
   events_.add( { { .cause = "led absent" } } );
   EXPECT_THAT( get( "/v1/events?limit=5&since=0" ), HasSubstr( R"("cause":"led absent")" ) );
   EXPECT_THAT( get( "/v1/events?limit=x" ), HasSubstr( "HTTP/1.1 400" ) );
}

TEST_F( HttpServerTest, ClosesAConnectionWithoutARequest ) {
   serve( { .idle = std::chrono::milliseconds( 20 ) } );
   EXPECT_EQ( say( "" ), "" );
}

TEST_F( HttpServerTest, AnswersForAnObjectThatIsTooSlowAndIgnoresItsLaterAnswer ) {
   serve( { .action = std::chrono::milliseconds( 20 ) } );
   const std::string body = R"({"words":["off"]})";
   EXPECT_THAT( say( "POST /v1/objects/led/action HTTP/1.0\r\nContent-Length: " +
                     std::to_string( body.size() ) + "\r\n\r\n" + body ),
                HasSubstr( "HTTP/1.1 504" ) );
   unanswered_.at( 0 )( Reading{} );
   EXPECT_THAT( get( "/v1/topology" ), HasSubstr( "200 OK" ) );
}

TEST_F( HttpServerTest, RefusesOneConnectionTooMany ) {
   serve( { .connections = 1 } );
   stream_protocol::socket first( loop_ );
   first.connect( path_.string() );
   EXPECT_THAT( get( "/v1/topology" ), HasSubstr( "HTTP/1.1 503" ) );
   first.close();
   loop_.run_for( std::chrono::milliseconds( 20 ) );
   EXPECT_THAT( get( "/v1/topology" ), HasSubstr( "200 OK" ) );
}

#ifndef ORBIS_SANITIZED // see NoDescriptors
TEST_F( HttpServerTest, PausesWhileThereAreNoDescriptorsAndAnswersWhenThereAreAgain ) {
   serve();
   stream_protocol::socket client( loop_ );
   client.connect( path_.string() );
   size_t steps = 0;
   ::testing::internal::CaptureStdout(); // spdlog's default
   {
      const NoDescriptors none;
      steps = loop_.run_for( std::chrono::milliseconds( 400 ) );
   }
   boost::asio::write( client,
                       boost::asio::buffer( std::string( "GET /v1/topology HTTP/1.0\r\n\r\n" ) ) );
   std::string heard;
   bool ended = false;
   boost::asio::async_read( client, boost::asio::dynamic_buffer( heard ),
                            [&ended]( const auto &, size_t ) { ended = true; } );
   for ( int i = 0; i < 20 && !ended; ++i )
      loop_.run_one_for( std::chrono::seconds( 1 ) );
   const std::string log = ::testing::internal::GetCapturedStdout();
   EXPECT_LE( steps, 10u );
   EXPECT_THAT( heard, HasSubstr( "200 OK" ) );
   const std::string said = "can't accept a client at " + path_.string() + ": Too many open files";
   EXPECT_THAT( log, HasSubstr( said ) );
   EXPECT_EQ( log.find( said ), log.rfind( said ) ) << log; // once
}
#endif

TEST_F( HttpServerTest, OpensItsSocketToOwnerAndGroupAndRemovesItAtTheEnd ) {
   serve();
   struct stat status {};
   ASSERT_EQ( ::stat( path_.c_str(), &status ), 0 );
   EXPECT_EQ( status.st_mode & 0777u, 0660u );
   server_.reset();
   EXPECT_FALSE( std::filesystem::exists( path_ ) );
}

TEST_F( HttpServerTest, ReplacesTheSocketOfADeadServer ) {
   { stream_protocol::acceptor dead( loop_, stream_protocol::endpoint( path_.string() ) ); }
   ASSERT_TRUE( std::filesystem::exists( path_ ) );
   serve();
   EXPECT_THAT( get( "/v1/topology" ), HasSubstr( "200 OK" ) );
}

TEST_F( HttpServerTest, LeavesAFileThatIsNotASocket ) {
   folder_.write( "host.sock", "a user's file" );
   EXPECT_EQ( refusal().rfind( "can't serve at " + path_.string() + ": ", 0 ), 0u ) << refusal();
   EXPECT_EQ( folder_.read( "host.sock" ), "a user's file" );
}

TEST_F( HttpServerTest, LeavesTheSocketOfAnotherServer ) {
   serve();
   EXPECT_EQ( refusal().rfind( "can't serve at " + path_.string() + ": ", 0 ), 0u ) << refusal();
   EXPECT_THAT( get( "/v1/topology" ), HasSubstr( "200 OK" ) );
}

TEST_F( HttpServerTest, RemovesOnlyItsOwnSocket ) {
   serve();
   folder_.remove( "host.sock" );
   folder_.write( "host.sock", "another's" );
   server_.reset();
   EXPECT_EQ( folder_.read( "host.sock" ), "another's" );
}

TEST_F( HttpServerTest, MakesTheFolderOfItsSocket ) {
   server_.emplace( loop_, folder_.path() / "new" / "host.sock", api_ );
   EXPECT_TRUE( std::filesystem::exists( folder_.path() / "new" / "host.sock" ) );
}

TEST_F( HttpServerTest, IsNotFoundByAClientWithoutASocket ) {
   EXPECT_FALSE( Client( path_ ).report() );
   EXPECT_EQ( Client( path_ ).act( "led", { "off" } ).state, State::Unreadable );
}

TEST_F( HttpServerTest, IsNotAskedByAClientWithoutARightToItsSocketWhichIsSaid ) {
   serve();
   ::setenv( "ORBIS_HOST_SOCKET", path_.c_str(), 1 );
   ::testing::internal::CaptureStdout(); // spdlog's default
   bool isAsked = true;
   {
      const NoRights none( path_.string() );
      isAsked = Client::ofBoard( SCRIPTED_BOARD ).has_value();
   }
   const std::string log = ::testing::internal::GetCapturedStdout();
   EXPECT_FALSE( isAsked );
   EXPECT_THAT( log,
                HasSubstr( "a serve can't be asked: " + path_.string() + ": permission denied" ) );
}

// The other commands while serve runs for the same board.
class ServeTest : public ::testing::Test {
 protected:
   ServeTest() { folder_.waitFor( "err.txt", "temp, psu, fan and 8 more: ok" ); }

   int run( const std::vector<std::string> &arguments ) {
      ScriptedHost program( client_, arguments, folder_ );
      const int code = program.wait();
      out = client_.read( "out.txt" );
      err = client_.read( "err.txt" );
      return code;
   }
   std::string calls() const { return folder_.read( "calls" ); }

   const TestSupport::PrivateFolder folder_,
      client_; // scripts and calls of serve, and of the other command
   ScriptedHost serve_{ folder_, { "serve", SCRIPTED_BOARD, "--period", "0.1" } };
   std::string out, err;
};

TEST_F( ServeTest, IsAskedByShow ) {
   folder_.write( "temp.temperature", "-7.5" );
   EXPECT_THAT( run( { "show", "-v", SCRIPTED_BOARD } ), ::testing::AnyOf( 0, 1 ) );
   EXPECT_THAT( out, HasSubstr( "temp    temp_sensor" ) );
   EXPECT_THAT( err, HasSubstr( "asks the serve at " ) );
   EXPECT_EQ( client_.read( "calls" ), "" ); // it brought nothing up
}

TEST_F( ServeTest, CarriesActionsOutAndKeepsTheLastSetting ) {
   EXPECT_EQ( run( { "led", "led", "beacon", "--board", SCRIPTED_BOARD } ), 0 ) << err;
   EXPECT_THAT( calls(), HasSubstr( "led.set_light_setting 6\n" ) );
   EXPECT_THAT( err, Not( HasSubstr( "Ctrl-C" ) ) );
   run( { "show", SCRIPTED_BOARD } );
   EXPECT_THAT( out, HasSubstr( "setting         beacon" ) );
   EXPECT_EQ( run( { "xcvr", "qsfp", "lpmode", "on", "--board", SCRIPTED_BOARD } ), 1 );
   EXPECT_THAT( err, HasSubstr( "qsfp: the driver doesn't support this" ) );
   folder_.write( "fan.set_rpm", "assert" );
   EXPECT_EQ( run( { "fan", "fan", "1", "--board", SCRIPTED_BOARD } ), 1 );
   EXPECT_THAT( err, HasSubstr( "Assertion `chipAnswers' failed." ) );
}

TEST_F( ServeTest, RemembersTheSpeedThatAFanTookAndNoOther ) {
   EXPECT_EQ( run( { "fan", "fan", "4200", "--board", SCRIPTED_BOARD } ), 0 ) << err;
   folder_.write( "fan.set_rpm", "status 6 execute: gone" );
   EXPECT_EQ( run( { "fan", "fan", "9000", "--board", SCRIPTED_BOARD } ), 1 );
   run( { "show", SCRIPTED_BOARD } );
   EXPECT_THAT( out, HasSubstr( "target          4200 rpm" ) );
   EXPECT_THAT( out, Not( HasSubstr( "9000" ) ) );
}

TEST_F( ServeTest, IsWatchedAndReplacedOnceItHasGone ) {
   ScriptedHost watch( client_, { "watch", "-v", SCRIPTED_BOARD, "--period", "0.1" }, folder_ );
   client_.waitFor( "out.txt", "temp    temp_sensor" );
   EXPECT_EQ( client_.read( "calls" ), "" );
   serve_.signal( SIGTERM );
   EXPECT_EQ( serve_.wait(), 0 );
   client_.waitFor( "err.txt", "has ended" );
   client_.waitFor( "err.txt", "this command brings the board up" );
   watch.signal( SIGINT );
   EXPECT_EQ( watch.wait(), 0 );
   EXPECT_FALSE( std::filesystem::exists( folder_.path() / "host.sock" ) );
}

TEST_F( ServeTest, IsNotAskedForAnotherBoard ) {
   std::filesystem::copy( SCRIPTED_BOARD, client_.path(),
                          std::filesystem::copy_options::recursive );
   EXPECT_EQ( run( { "show", "-v", client_.path() } ), 0 ) << err;
   EXPECT_THAT( err, HasSubstr( "this command brings the board up" ) );
}

TEST_F( ServeTest, RefusesToStartASecondTimeAtTheSameSocket ) {
   const std::string socket = ( folder_.path() / "host.sock" ).string();
   EXPECT_EQ( run( { "serve", SCRIPTED_BOARD } ), 5 );
   EXPECT_THAT( err, HasSubstr( "can't serve at " + socket + ": " ) );
   EXPECT_EQ( client_.read( "calls" ), "" ); // it brought nothing up
   EXPECT_TRUE( Client( socket ).report() ); // the first still answers
}

} // namespace
} // namespace Host
