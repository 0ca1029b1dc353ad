#include "support/ScriptedHost.h"

#include <chrono>
#include <csignal>
#include <gmock/gmock.h>
#include <thread>

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class WatchTest : public ::testing::Test {
 protected:
   const TestSupport::PrivateFolder folder;
   const std::vector<std::string> command{ "watch", SCRIPTED_BOARD, "--period", "0.1" };
};

// The end of a process that isn't this one's child shows in /proc alone.
bool endsSoon( pid_t process ) {
   for ( int i = 0; i < 1000; ++i ) {
      if ( ::kill( process, 0 ) != 0 )
         return true;
      std::this_thread::sleep_for( std::chrono::milliseconds( 5 ) );
   }
   return false;
}

TEST_F( WatchTest, AppendsTablesWhereThereIsNoTerminal ) {
   ScriptedHost program( folder, command );
   const size_t at = folder.waitFor( "out.txt", "temp    temp_sensor  temperature     1.0 °C" );
   folder.write( "temp.temperature", "-3.5" );
   folder.waitFor( "out.txt", "temp    temp_sensor  temperature     -3.5 °C", at );
   program.signal( SIGINT );
   EXPECT_EQ( program.wait(), 0 );
   EXPECT_THAT( folder.read( "out.txt" ), Not( HasSubstr( "\x1b" ) ) );
}

TEST_F( WatchTest, ShowsOneTableForEveryRoundOfReadings ) {
   ScriptedHost program( folder, command );
   size_t at = 0;
   for ( int i = 0; i < 5; ++i )
      at = folder.waitFor( "out.txt", "NAME", at );
   const std::string calls = folder.read( "calls" );
   size_t rounds = 0;
   for ( size_t i = 0; ( i = calls.find( "temp.temperature", i ) ) != std::string::npos; ++i )
      ++rounds;
   EXPECT_GE( rounds, 4u ); // the first table may have come before all was brought up
}

TEST_F( WatchTest, ShowsAFaultAndThenTheReadingAgain ) {
   ScriptedHost program( folder, command );
   size_t at = folder.waitFor( "out.txt", "1.0 °C" );
   folder.write( "temp.temperature", "status 4 execute: error. 111, Connection refused" );
   at = folder.waitFor( "out.txt", "status 4 (socket): 111, Connection refused", at );
   folder.remove( "temp.temperature" );
   folder.waitFor( "out.txt", "1.0 °C", at );
}

TEST_F( WatchTest, ShowsThatTheServerIsMissingWhileItRetries ) {
   folder.write( "init", "hang" );
   ScriptedHost program( folder, command );
   folder.waitFor( "out.txt", "can't reach the SMBus server yet: pl_temp_sensor_init is trying" );
}

TEST_F( WatchTest, TheChildEndsWithAParentThatIsKilledEvenFromInsideACall ) {
   folder.write( "fan.speed", "hang" );
   ScriptedHost program( folder, command );
   folder.waitFor( "calls", "fan.speed\n" );
   const pid_t child = program.child();
   ASSERT_GT( child, 0 );
   program.signal( SIGKILL );
   program.wait();
   EXPECT_TRUE( endsSoon( child ) );
}

TEST_F( WatchTest, LeavesNoChildBehindWhenItEndsWhileACallHangs ) {
   folder.write( "fan.speed", "hang" );
   ScriptedHost program( folder, command );
   folder.waitFor( "calls", "fan.speed\n" );
   const pid_t child = program.child();
   program.signal( SIGTERM );
   EXPECT_EQ( program.wait(), 0 );
   EXPECT_TRUE( endsSoon( child ) );
}

} // namespace
