// What a person is told of a board that is not well, by the programs as they are used.
#include "RunningBoard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <thread>

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class HealthTest : public ::testing::Test {
 protected:
   // Asks until the answer has these words.
   Ran healthWith( const std::string &words ) {
      using Clock = std::chrono::steady_clock;
      const auto end = Clock::now() + std::chrono::seconds( 20 );
      for ( ;; ) {
         const Ran ran = board.host( { "health" } );
         if ( ran.output.find( words ) != std::string::npos || Clock::now() > end )
            return ran;
         std::this_thread::sleep_for( std::chrono::milliseconds( 100 ) );
      }
   }

   static pid_t childOf( pid_t serve ) {
      const std::string task = "/proc/" + std::to_string( serve ) + "/task/";
      std::ifstream children( task + std::to_string( serve ) + "/children" );
      pid_t child = 0;
      children >> child;
      return child; // 0: there is none now
   }

   RunningBoard board{ "kelt" };
};

TEST_F( HealthTest, AGoodBoardIsOneLineAndExitCode0 ) {
   const Ran ran = board.host( { "health" } );
   EXPECT_EQ( ran.exitCode, 0 ) << ran.errors;
   EXPECT_THAT( ran.output, StartsWith( "OK: all 116 objects are good; 28 more are of modules that "
                                        "are not there\n" ) );
}

TEST_F( HealthTest, ASensorAboveItsCriticalLimitIsCriticalInShowAndInItsExitCode ) {
   board.smbus( { "sim", "set", "temp-asic", "temperature", "120" } );
   const Ran shown = board.host( { "show" } );
   EXPECT_EQ( shown.exitCode, 1 );
   EXPECT_THAT( shown.output, HasSubstr( "critical" ) );
   EXPECT_THAT( shown.output, HasSubstr( "above the critical limit of 100 °C" ) );
   const Ran health = board.host( { "health", "--brief" } );
   EXPECT_EQ( health.exitCode, 2 );
   EXPECT_EQ( health.output, "CRITICAL: 1 cause: temp-asic temperature limit\n" );
}

TEST_F( HealthTest, ASupplyWithoutMainsSaysSo ) {
   board.smbus( { "sim", "set", "psu1", "line", "0" } );
   const Ran ran = board.host( { "health" } );
   EXPECT_EQ( ran.exitCode, 2 );
   EXPECT_THAT( ran.output, AllOf( StartsWith( "CRITICAL: 1 cause: psu1 input lost\n" ),
                                   HasSubstr( "input undervoltage, unit off for insufficient input "
                                              "voltage" ),
                                   HasSubstr( "supplies" ) ) );
}

TEST_F( HealthTest, AFailedSupplySaysWhy ) {
   board.smbus( { "sim", "set", "psu1", "failed", "1" } );
   EXPECT_THAT( board.host( { "health" } ).output,
                StartsWith( "CRITICAL: 1 cause: psu1 output failed\n" ) );
}

TEST_F( HealthTest, APulledSupplyIsOneCauseAndItsValuesAreAbsent ) {
   board.smbus( { "sim", "pull", "psu2" } );
   const Ran ran = board.host( { "health" } );
   EXPECT_EQ( ran.exitCode, 1 );
   EXPECT_THAT( ran.output, AllOf( StartsWith( "WARNING: 1 cause: psu2-slot absent\n" ),
                                   HasSubstr( "psu2-hotspot" ) ) );
   const Ran shown = board.host( { "show" } );
   for ( const char *row :
         { "psu2            psu          power_ok", "psu2-fan1", "psu2-inlet" } ) {
      const size_t begin = shown.output.find( row );
      ASSERT_NE( begin, std::string::npos ) << row;
      const std::string line =
         shown.output.substr( begin, shown.output.find( '\n', begin ) - begin );
      EXPECT_THAT( line, AllOf( HasSubstr( " absent " ), HasSubstr( "psu2-slot absent" ),
                                Not( HasSubstr( "unreadable" ) ) ) );
   }
}

TEST_F( HealthTest, AStalledRotorIsCriticalAtItsFirstReading ) {
   board.smbus( { "sim", "stall", "fan3.inlet" } );
   while ( board.quantity( "fan3.inlet", "rpm" ) >= 2000 )
      std::this_thread::sleep_for( std::chrono::milliseconds( 50 ) );
   EXPECT_THAT( board.host( { "health" } ).output,
                StartsWith( "CRITICAL: 1 cause: fan3-inlet speed limit\n" ) );
}

TEST_F( HealthTest, WhatIsWrongAtTheCommandLineIsUnknown ) {
   EXPECT_EQ( board.host( { "health", "--breif" } ).exitCode, 3 );
   board.killServer();
   const Ran ran = board.host( { "health" } );
   EXPECT_THAT( ran.output, StartsWith( "CRITICAL: 1 cause: server\n" ) );
}

TEST_F( HealthTest, AServerThatEndsIsOneCauseAndGoneWhenItIsBack ) {
   const auto serve = board.serve( { "--period", "0.2" } );
   healthWith( "OK: all " );
   board.killServer();
   EXPECT_THAT( healthWith( "server" ).output, StartsWith( "CRITICAL: 1 cause: server\n" ) );
   board.startServer();
   EXPECT_THAT( healthWith( "OK: all " ).output, StartsWith( "OK: all " ) );
}

TEST_F( HealthTest, APlugInThatIsKilledIsAnEventAndGoneWhenItIsBack ) {
   const auto serve = board.serve( { "--period", "2" } );
   healthWith( "OK: all " );
   // Between two rounds nothing runs in it. Else the object in hand is blamed, which is good again
   // soon, and another child can be killed.
   Ran events{};
   for ( int i = 0; i < 200 && events.output.find( "clear" ) == std::string::npos; ++i ) {
      if ( i % 50 == 0 && events.output.find( "plug-in" ) == std::string::npos )
         if ( const pid_t child = childOf( serve->pid() ); child > 0 )
            ::kill( child, SIGKILL );
      std::this_thread::sleep_for( std::chrono::milliseconds( 100 ) );
      events = board.host( { "events" } );
   }
   EXPECT_THAT( events.output, AllOf( HasSubstr( "plug-in" ), HasSubstr( "signal 9" ) ) );
   EXPECT_THAT( healthWith( "OK: all " ).output, StartsWith( "OK: all " ) );
}

} // namespace
