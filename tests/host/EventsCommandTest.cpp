// The commands events and acknowledge. The serve that they ask is the test's.
#include "host/Times.h"
#include "host/serve/Client.h"
#include "host/serve/Events.h"
#include "support/ApiServer.h"
#include "support/ScriptedHost.h"

#include <boost/asio.hpp>
#include <csignal>
#include <future>
#include <gmock/gmock.h>
#include <thread>

namespace Host {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

Health::Event supplyGone( int second = 1 ) {
   return { .time = Health::WallTime( std::chrono::seconds( second ) ),
            .cause = "psu2-slot absent",
            .object = "slot",
            .level = Health::Level::Critical,
            .words = "no module",
            .explains = std::vector<std::string>( 20, "psu2-fan1" ) };
}

class EventsCommandTest : public ::testing::Test {
 protected:
   // A server with a thread; its end ends its connections, too.
   class Running {
    public:
      Running( const std::filesystem::path &socket, const Api &api )
         : server_( loop_, socket, api ), thread_( [this] { loop_.run(); } ) {}
      ~Running() {
         loop_.stop();
         thread_.join();
      }
      boost::asio::io_context &loop() { return loop_; }

    private:
      boost::asio::io_context loop_{ 1 };
      const ApiServer server_;
      std::thread thread_;
   };

   void serve() { server_.emplace( folder_.path() / "host.sock", api_ ); }
   void stop() { server_.reset(); }
   // In the thread of the server, while there is one.
   void add( const std::vector<Health::Event> &events ) {
      if ( !server_ )
         return events_.add( events );
      std::promise<void> done;
      boost::asio::post( server_->loop(), [&] {
         events_.add( events );
         done.set_value();
      } );
      done.get_future().wait();
   }
   int run( const std::vector<std::string> &arguments,
            ScriptedHost::Output output = ScriptedHost::Output::Files ) {
      ScriptedHost program( folder_, arguments, output );
      const int code = program.wait();
      out = folder_.read( "out.txt" );
      err = folder_.read( "err.txt" );
      return code;
   }

   const TestSupport::PrivateFolder folder_;
   const BoardFiles::Board board_{
      .topology = "[]", .objects = { { .kind = BoardFiles::Kind::Slot, .name = "slot" } }
   };
   Events events_{ folder_.path() / "host.events", []( const auto & ) { return true; } };
   const Api api_{
      board_,
      serveName( SCRIPTED_BOARD ),
      { .report = [] { return BoardReport{}; }, .ask = {}, .busses = {}, .events = &events_ }
   };
   std::optional<Running> server_;
   std::string out, err;
};

TEST_F( EventsCommandTest, EachEventIsALine ) {
   serve();
   Health::Event clear = supplyGone( 62 );
   clear.what = Health::Event::What::Clear;
   clear.words = "";
   clear.explains = {};
   add( { supplyGone(), clear } );
   EXPECT_EQ( run( { "events", SCRIPTED_BOARD } ), 0 ) << err;
   EXPECT_THAT( out, HasSubstr( localTimeText( supplyGone().time ) +
                                "  critical       psu2-slot absent: no module; explains psu2-fan1, "
                                "psu2-fan1, " ) );
   EXPECT_THAT( out, Not( HasSubstr( "more" ) ) ); // nothing is left out for a program
   EXPECT_THAT( out, EndsWith( "  clear          psu2-slot absent\n" ) );
   EXPECT_EQ( err, "" );
}

TEST_F( EventsCommandTest, OnATerminalALongListIsCounted ) {
   serve();
   add( { supplyGone() } );
   ScriptedHost program( folder_, { "events", SCRIPTED_BOARD }, ScriptedHost::Output::Terminal );
   const std::string line = program.waitForScreen( " more" );
   EXPECT_THAT( line, HasSubstr( "explains psu2-fan1, psu2-fan1, psu2-fan1 and 17 more" ) );
   EXPECT_EQ( program.wait(), 0 );
}

TEST_F( EventsCommandTest, GivesWhatIsAskedForAsJson ) {
   serve();
   add(
      { supplyGone(), { .time = Health::WallTime( std::chrono::hours( 1 ) ), .cause = "other" } } );
   EXPECT_EQ( run( { "events", SCRIPTED_BOARD, "--json", "--object", "slot" } ), 0 ) << err;
   EXPECT_THAT( out, AllOf( HasSubstr( R"({"id":1,"time":"1970-01-01T00:00:01.000Z",)" ),
                            Not( HasSubstr( "other" ) ), EndsWith( "}\n" ) ) );
   EXPECT_EQ( run( { "events", SCRIPTED_BOARD, "--since", "1" } ), 0 ) << err;
   EXPECT_THAT( out, AllOf( HasSubstr( "other" ), Not( HasSubstr( "psu2-slot" ) ) ) );
   EXPECT_EQ( run( { "events", SCRIPTED_BOARD, "--since", "1h" } ), 0 ) << err;
   EXPECT_EQ( out, "" );
   EXPECT_EQ( run( { "events", SCRIPTED_BOARD, "--since", "1970-01-01 00:30Z" } ), 2 );
   EXPECT_THAT( err, HasSubstr( R"(1970-01-01 00:30Z is not "2026-11-22 13:00", "13:00")" ) );
   EXPECT_EQ( run( { "events", SCRIPTED_BOARD, "--object", "fan" } ), 1 );
   EXPECT_THAT( err, HasSubstr( R"(the board has no object "fan")" ) );
}

TEST_F( EventsCommandTest, FollowsWhatComesAlsoAcrossARestartOfServe ) {
   serve();
   add( { supplyGone() } );
   ScriptedHost program( folder_, { "events", SCRIPTED_BOARD, "--follow" } );
   size_t at = folder_.waitFor( "out.txt", "psu2-slot absent" );
   add( { { .cause = "second" } } );
   at = folder_.waitFor( "out.txt", "second\n", at );
   stop();
   folder_.waitFor( "err.txt", "serve can't be heard: " );
   add( { { .cause = "third" } } );
   serve();
   at = folder_.waitFor( "out.txt", "third\n", at );
   add( { { .cause = "fourth" } } );
   folder_.waitFor( "out.txt", "fourth\n", at );
   program.signal( SIGINT );
   EXPECT_EQ( program.wait(), 0 );
   const std::string all = folder_.read( "out.txt" );
   EXPECT_EQ( std::count( all.begin(), all.end(), '\n' ), 4 ) << all;
}

TEST_F( EventsCommandTest, WithoutAServeTheJournalIsRead ) {
   add( { supplyGone() } );
   EXPECT_EQ( run( { "events", SCRIPTED_BOARD, "-v" } ), 0 ) << err;
   EXPECT_THAT( out, HasSubstr( "psu2-slot absent" ) );
   EXPECT_THAT( err, HasSubstr( "no serve runs for " SCRIPTED_BOARD ": reads " +
                                folder_.file( "host.events" ) ) );
   EXPECT_EQ( run( { "events", SCRIPTED_BOARD, "--follow" } ), 1 );
   EXPECT_THAT( err, HasSubstr( "events --follow needs a running serve, and none runs for " ) );
   EXPECT_EQ( run( { "events", SCRIPTED_BOARD, "--events", folder_.file( "none" ) } ), 1 );
   EXPECT_THAT( err, HasSubstr( "its journal can't be read: " + folder_.file( "none" ) +
                                ": No such file or directory" ) );
}

TEST_F( EventsCommandTest, AcknowledgesCausesThatAreThere ) {
   serve();
   std::vector<std::string> seen; // in the server's thread, until it has answered
   events_.acknowledgeWith( [&seen]( const std::string &cause ) {
      seen.push_back( cause );
      return cause == "psu2-slot absent";
   } );
   EXPECT_EQ( run( { "acknowledge", "--board", SCRIPTED_BOARD, "psu2-slot absent" } ), 0 ) << err;
   EXPECT_EQ( err, "acknowledged: psu2-slot absent\n" );
   EXPECT_EQ( run( { "acknowledge", "--board", SCRIPTED_BOARD, "fan1", "psu2-slot absent" } ), 1 );
   EXPECT_EQ( err, "there is no cause \"fan1\" now\nacknowledged: psu2-slot absent\n" );
   stop();
   EXPECT_THAT( seen, ::testing::ElementsAre( "psu2-slot absent", "fan1", "psu2-slot absent" ) );
}

TEST_F( EventsCommandTest, AcknowledgesAllThatNobodyHasAcknowledged ) {
   serve();
   std::vector<std::string> seen;
   events_.acknowledgeWith( [&seen]( const std::string &cause ) {
      seen.push_back( cause );
      return true;
   } );
   using enum Health::Event::What;
   add( { { .what = Set, .cause = "a" },
          { .what = Set, .cause = "b" },
          { .what = Set, .cause = "c" },
          { .what = Clear, .cause = "a" },
          { .what = Acknowledged, .cause = "b" },
          { .what = Set, .cause = "c" } } );
   EXPECT_EQ( run( { "acknowledge", "--board", SCRIPTED_BOARD, "--all" } ), 0 ) << err;
   stop();
   EXPECT_THAT( seen, ::testing::ElementsAre( "c" ) );
}

TEST_F( EventsCommandTest, AcknowledgeNeedsAServeAndSomethingToAcknowledge ) {
   EXPECT_EQ( run( { "acknowledge", "--board", SCRIPTED_BOARD, "x" } ), 1 );
   EXPECT_THAT( err, HasSubstr( "acknowledge needs a running serve, and none runs for " ) );
   EXPECT_EQ( run( { "acknowledge", "--board", SCRIPTED_BOARD } ), 2 );
   EXPECT_THAT( err, HasSubstr( "CAUSE or --all is required" ) );
   EXPECT_EQ( run( { "acknowledge", "--board", SCRIPTED_BOARD, "--all", "x" } ), 2 );
}

// The journal of the program's own serve.
class ServeEventsTest : public ::testing::Test {
 protected:
   // The files of the folder that begin so, once serve runs.
   bool hasJournal( const std::vector<std::string> &more, const std::string &name ) const {
      std::vector<std::string> arguments{ "serve", SCRIPTED_BOARD, "--period", "0.1" };
      arguments.insert( arguments.end(), more.begin(), more.end() );
      ScriptedHost serve( folder_, arguments );
      folder_.waitFor( "err.txt", "serving " );
      const bool isThere = std::filesystem::exists( folder_.file( name ) );
      serve.signal( SIGTERM );
      EXPECT_EQ( serve.wait(), 0 );
      return isThere;
   }
   const TestSupport::PrivateFolder folder_;
};

TEST_F( ServeEventsTest, ItsJournalIsBesideItsSocketOrWhereItIsNamed ) {
   EXPECT_TRUE( hasJournal( {}, "host.events" ) );
   EXPECT_TRUE( hasJournal( { "--events", folder_.file( "named" ) }, "named" ) );
   ::setenv( "ORBIS_HOST_EVENTS", folder_.file( "environment" ).c_str(), 1 );
   EXPECT_TRUE( hasJournal( {}, "environment" ) );
   ::unsetenv( "ORBIS_HOST_EVENTS" );
}

TEST_F( ServeEventsTest, ItGoesOnWithoutAJournalThatIsNone ) {
   const std::string file = folder_.write( "host.events", std::string( 200, 'x' ) );
   hasJournal( {}, "host.events" );
   EXPECT_THAT(
      folder_.read( "err.txt" ),
      HasSubstr( file + ": this is not a journal of events; events are kept in memory" ) );
   EXPECT_EQ( folder_.read( "host.events" ), std::string( 200, 'x' ) );
}

} // namespace
} // namespace Host
