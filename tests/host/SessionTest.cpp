#include "host/session/Session.h"

#include "NoDescriptors.h"
#include "PrivateFolder.h"

#include <cstdlib>
#include <gmock/gmock.h>

namespace Host {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;

// A real child process with the scripted plug-in, and short limits. The child is this test program.
class SessionTest : public ::testing::Test {
 protected:
   SessionTest() {
      ::setenv( "SCRIPT", folder.path().c_str(), 1 );
      add( BoardFiles::Kind::TempSensor, "a" );
      add( BoardFiles::Kind::TempSensor, "b" );
   }
   void add( BoardFiles::Kind kind, const std::string &name ) {
      board.objects.push_back( { .kind = kind,
                                 .name = name,
                                 .text = R"({ "driverArgs": { "script": ")" + name + "\" } }" } );
   }

   // Runs until `enough` says so, which is asked whenever something changed.
   void runUntil( const std::function<bool()> &enough ) {
      loop.restart();
      changed = [this, enough] {
         if ( enough() )
            loop.stop();
      };
      loop.run_for( 20s );
      EXPECT_TRUE( enough() );
   }
   void start( Limits limits, const std::string &plugin = SCRIPTED_PLUGIN, int traceLevel = 7 ) {
      session.emplace( loop, board, plugin, limits,
                       Session::Handlers{
                          .changed = [this] { changed(); },
                          .trace = [this]( const Trace &trace ) { traces.push_back( trace.text ); },
                          .notice = [this]( const std::string &text ) { log += text + "\n"; },
                          .traceLevel = traceLevel } );
   }
   void showOnce( Limits limits = {} ) {
      limits.once = true;
      start( limits );
      runUntil( [this] { return session->supervisor().roundDone(); } );
   }
   BoardReport report() const { return session->supervisor().report( Clock::now() ); }
   std::string calls() const { return folder.read( "calls" ); }

   const TestSupport::PrivateFolder folder;
   BoardFiles::Board board{ .topology = "[]",
                            .objects = {},
                            .traces = { .faults = { "execute: failure in response " } } };
   boost::asio::io_context loop;
   std::function<void()> changed = [] {};
   std::vector<std::string> traces;
   std::string log;
   std::optional<Session> session;
};

TEST_F( SessionTest, ReadsTheValuesOfAllObjects ) {
   folder.write( "a.temperature", "-3.5" );
   showOnce();
   EXPECT_EQ( report()[0].values.at( 0 ).reading.value, Scalar( -3.5 ) );
   EXPECT_EQ( report()[1].values.at( 0 ).reading.value, Scalar( 1.0 ) );
   EXPECT_EQ( calls(), "init\na.add\nb.add\na.temperature\nb.temperature\n" );
   EXPECT_THAT( traces, ::testing::Contains( "adding b" ) );
}

TEST_F( SessionTest, GivesAnAssertionsTextToTheObjectAndReadsTheOthers ) {
   folder.write( "a.add", "assert" );
   showOnce();
   EXPECT_THAT( report()[0].fault.words,
                MatchesRegex( "tests/host/scripted/ScriptedPlugin.cpp:[0-9]+: .*act.*: "
                              "Assertion `chipAnswers' failed\\." ) );
   EXPECT_EQ( report()[1].values.at( 0 ).reading.state, State::Ok );
   EXPECT_EQ( calls(), "init\na.add\ninit\nb.add\nb.temperature\n" // and again after the others
                       "a.add\ninit\na.add\ninit\na.add\ninit\n" );
}

TEST_F( SessionTest, HearsWhatThePluginSaidInTheCommandThatEndedTheChild ) {
   board.objects.clear();
   add( BoardFiles::Kind::Psu, "psu" );
   folder.write( "psu.input_current", "status 6 execute: failure in response gone" );
   folder.write( "psu.output_voltage", "assert" );
   start( { .once = true }, SCRIPTED_PLUGIN, -1 );
   runUntil( [this] { return log.find( "Assertion" ) != std::string::npos; } );
   EXPECT_THAT( traces, ::testing::Contains( "execute: failure in response gone" ) );
   std::vector<std::string> names;
   for ( const BoardReport all = report(); const ValueReport &value : all[0].values )
      names.push_back( value.reading.name );
   EXPECT_THAT( names, ::testing::ElementsAre( "power_ok", "input_current", "output_current",
                                               "input_voltage" ) );
}

TEST_F( SessionTest, BlamesTheOneOfADevicesObjectsThatEndedTheChild ) {
   add( BoardFiles::Kind::TempSensor, "c" );
   for ( BoardFiles::ObjectDescription &object : board.objects )
      object.did = 1;
   folder.write( "b.temperature", "assert" );
   start( { .period = 1h } );
   runUntil( [this] { return report()[2].values.size() == 1; } );
   EXPECT_EQ( report()[0].values.at( 0 ).reading.state, State::Ok );
   EXPECT_THAT( report()[1].fault.words, HasSubstr( "Assertion `chipAnswers' failed" ) );
   EXPECT_EQ( report()[2].values.at( 0 ).reading.state, State::Ok );
}

TEST_F( SessionTest, BlamesTheOneOfADevicesObjectsThatHangs ) {
   for ( BoardFiles::ObjectDescription &object : board.objects )
      object.did = 1;
   folder.write( "b.temperature", "hang" );
   showOnce( { .step = 200ms } );
   EXPECT_EQ( report()[0].values.at( 0 ).reading.state, State::Ok );
   EXPECT_EQ( report()[1].fault.words, "temperature did not return within 0.2 s" );
}

TEST_F( SessionTest, NamesTheOperationInWhichTheChildIs ) {
   folder.write( "b.temperature", "hang" );
   start( { .period = 20ms } );
   while ( calls().find( "b.temperature" ) == std::string::npos )
      loop.run_one();
   EXPECT_EQ( session->operation(), "temperature" );
}

TEST_F( SessionTest, GivesTheExitCodeOfAChildThatEndsItself ) {
   folder.write( "b.temperature", "exit" );
   showOnce();
   EXPECT_EQ( report()[1].fault.words, "ended with exit code 3" );
}

TEST_F( SessionTest, EndsAChildThatSendsNonsenseAndReadsTheOthers ) {
   for ( const char *bytes : { "ff ff ff ff ff ff ff ff ff ff ff", // not a length
                               "ff ff ff ff 0f",                   // a length of 4 GiB
                               "02 0a 05",                         // a Trace that ends too early
                               "00",                               // an event without content
                               "05 12 03 1a 01 78" } ) {           // a Reading with state "x"
      folder.write( "a.temperature", std::string( "send " ) + bytes );
      showOnce();
      EXPECT_EQ( report()[0].fault.words,
                 "the plug-in's process sent a message that can't be read" )
         << bytes;
      EXPECT_EQ( report()[1].values.at( 0 ).reading.state, State::Ok );
   }
}

TEST_F( SessionTest, SaysThatTheLastMessageOfAChildIsIncomplete ) {
   folder.write( "a.temperature", "send 7f 0a" );
   showOnce();
   EXPECT_EQ( report()[0].fault.words, "ended with exit code 3 in the middle of a message" );
   EXPECT_EQ( report()[1].values.at( 0 ).reading.state, State::Ok );
}

TEST_F( SessionTest, GivesAnExceptionsTextAndKeepsTheChild ) {
   folder.write( "a.add", "throw stoi" );
   folder.write( "b.temperature", "throw out of range" );
   showOnce();
   EXPECT_THAT( report()[0].fault.words, HasSubstr( "stoi" ) );
   EXPECT_EQ( report()[1].values.at( 0 ).reading.fault.words, "out of range" );
   EXPECT_EQ( calls(), "init\na.add\nb.add\nb.temperature\n" );
}

TEST_F( SessionTest, ReportsAnObjectThatWasNotMade ) {
   folder.write( "a.add", "null" );
   showOnce();
   EXPECT_EQ( report()[0].fault.words, "pl_temp_sensor_add returned no object: adding a" );
}

TEST_F( SessionTest, EndsAHangingOperationAndReadsTheOthers ) {
   folder.write( "a.temperature", "hang" );
   showOnce( { .step = 200ms } );
   EXPECT_EQ( report()[0].fault.words, "temperature did not return within 0.2 s" );
   EXPECT_EQ( report()[1].values.at( 0 ).reading.state, State::Ok );
}

TEST_F( SessionTest, EndsInTimeWithoutAServer ) {
   folder.write( "init", "hang" );
   showOnce( { .init = 200ms } );
   for ( const ObjectReport &object : report() )
      EXPECT_EQ( object.fault.words,
                 "can't reach the SMBus server yet: pl_temp_sensor_init did not "
                 "return within 0.2 s" );
}

TEST_F( SessionTest, ShowsAFaultInTheNextPeriodAndTheReadingOnceItIsBack ) {
   start( { .period = 20ms, .staleAfter = 1000 } ); // also on a slow machine
   const auto state = [this] {
      const BoardReport all = report();
      return all[0].values.empty() ? State::Absent : all[0].values[0].reading.state;
   };
   runUntil( [&] { return state() == State::Ok; } );
   folder.write( "a.temperature", "status 4 execute: failure in response gone" );
   runUntil( [&] { return state() == State::Unreadable; } );
   EXPECT_EQ( report()[0].values[0].reading.fault, ( Fault{ 4, "gone" } ) );
   EXPECT_EQ( report()[1].values[0].reading.state, State::Ok );
   folder.remove( "a.temperature" );
   runUntil( [&] { return state() == State::Ok; } );
   EXPECT_EQ( calls().find( "init", 4 ), std::string::npos ); // by the same child
}

TEST_F( SessionTest, BringsBackAnObjectWhoseChildDiedOnceItsChipAnswers ) {
   folder.write( "a.temperature", "assert" );
   start( { .period = 20ms } );
   runUntil( [&] { return report()[0].fault.words.find( "Assertion" ) != std::string::npos; } );
   folder.remove( "a.temperature" );
   runUntil( [&] { return report()[0].state == State::Ok && !report()[0].values.empty(); } );
}

TEST_F( SessionTest, RunsThePluginsTimersBetweenCommands ) {
   board.objects.clear();
   add( BoardFiles::Kind::Led, "led" );
   start( { .period = 10ms } );
   runUntil( [this] { return calls().find( "tick\ntick\n" ) != std::string::npos; } );
}

TEST_F( SessionTest, OutlivesATimerThatEndsTheChild ) {
   board.objects.clear();
   add( BoardFiles::Kind::Led, "led" );
   folder.write( "tick", "assert" );
   start( { .period = 10ms } );
   runUntil( [this] { return log.find( "Assertion `chipAnswers' failed" ) != std::string::npos; } );
   folder.remove( "tick" );
   runUntil( [this] { return calls().find( "tick\ntick\n" ) != std::string::npos; } );
   EXPECT_EQ( report()[0].state, State::Ok );
}

#ifndef ORBIS_SANITIZED // see NoDescriptors
TEST_F( SessionTest, StartsAChildAgainOnceThereAreDescriptorsForIt ) {
   folder.write( "b.temperature", "exit" );
   std::optional<NoDescriptors> none;
   start( { .period = 20ms } );
   runUntil( [&] { // the child dies while there are none
      if ( !none && calls().find( "a.temperature" ) != std::string::npos )
         none.emplace();
      return report()[0].fault.words.find( "Too many open files" ) != std::string::npos;
   } );
   EXPECT_THAT( report()[0].fault.words, HasSubstr( "the plug-in's process can't be started: " ) );
   EXPECT_EQ( report()[1].state, State::Unreadable );
   std::optional<Reading> refused;
   session->ask( 0, { .operation = "x" },
                 [&refused]( const Reading &answer ) { refused = answer; } );
   EXPECT_THAT( refused.value().fault.words, HasSubstr( "Too many open files" ) );
   none.reset();
   folder.remove( "b.temperature" );
   runUntil( [&] {
      return report()[0].state == State::Ok && report()[1].state == State::Ok &&
             !report()[1].values.empty();
   } );
}

TEST_F( SessionTest, SaysWhyTheFirstChildCanNotBeStarted ) {
   start( {} );
   const NoDescriptors none;
   try {
      loop.run();
      ADD_FAILURE() << "it goes on without a child";
   } catch ( const std::runtime_error &failure ) {
      EXPECT_THAT( failure.what(), HasSubstr( "the plug-in's process can't be started: " ) );
   }
}
#endif

TEST_F( SessionTest, SaysWhyAPluginCanNotBeLoaded ) {
   start( {}, "/nowhere/libNothing.so" );
   runUntil( [this] { return session->supervisor().loadFault().has_value(); } );
   EXPECT_THAT( session->supervisor().loadFault()->words, HasSubstr( "/nowhere/libNothing.so" ) );
}

} // namespace
} // namespace Host
