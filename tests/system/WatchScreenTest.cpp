// watch on a terminal: the simulated board, a running serve, and keys.
#include "DrawnProgram.h"
#include "RunningBoard.h"

#include <gmock/gmock.h>
#include <termios.h>

#include <csignal>
#include <regex>
#include <sstream>

namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using TestSupport::DrawnProgram;

class WatchScreenTest : public ::testing::Test {
 protected:
   // Every module was read.
   WatchScreenTest() {
      for ( int i = 0; i < 200 && board.host( { "modules" } ).exitCode != 0; ++i ) {
      }
   }
   std::vector<std::string> command( const std::vector<std::string> &more = {} ) const {
      std::vector<std::string> words{ ORBIS_HOST, "watch", BOARDS "/kelt", "--period", "0.2" };
      words.insert( words.end(), more.begin(), more.end() );
      return words;
   }

   RunningBoard board{ "kelt" };
   const std::unique_ptr<TestSupport::StartedProgram> serve{ board.serve(
      { "--period", "0.2", "--period-of", "module=1" } ) };
};

// Times and ages are never the same, nor is what a fan just turns.
std::string withoutTimes( const std::string &screen ) {
   std::string text =
      std::regex_replace( screen, std::regex( "[0-9]{2}:[0-9]{2}:[0-9]{2}" ), "00:00:00" );
   text = std::regex_replace( text, std::regex( " [0-9.]+ s " ), " 0.0 s " );
   return std::regex_replace( text, std::regex( "[0-9]+ rpm  [0-9.]+ %" ), "12000 rpm  50.0 %" );
}

TEST_F( WatchScreenTest, ShowsTheWholeGoodBoardAt80x24 ) {
   DrawnProgram watch( command(), {} );
   watch.waitFor( "OK: all 174 objects are good" );
   watch.waitForScreen(
      R"( kelt  OK: all 174 objects are good; 56 more are of modules that are … 00:00:00
▾ CAUSES  none
   all 174 objects are good; 56 more are of modules that are not there
▾ SUPPLIES  2
   psu1 ok           0.0 s  power_ok 1  input 1.25 A  230.0 V  287.5 W
                            output 21.5 A  11.96 V  257.0 W
   psu2 ok           0.0 s  power_ok 1  input 1.02 A  228.0 V  232.2 W
                            output 17.25 A  11.96 V  206.5 W
▾ FANS  19
   fan1        ok           0.0 s  12000 rpm  50.0 %
   fan1-inlet  ok           0.0 s  12000 rpm  50.0 %
   fan1-outlet ok           0.0 s  12000 rpm  50.0 %
   fan2        ok           0.0 s  12000 rpm  50.0 %
   fan2-inlet  ok           0.0 s  12000 rpm  50.0 %
   fan2-outlet ok           0.0 s  12000 rpm  50.0 %
   fan3        ok           0.0 s  12000 rpm  50.0 %
   fan3-inlet  ok           0.0 s  12000 rpm  50.0 %
   fan3-outlet ok           0.0 s  12000 rpm  50.0 %
   fan4        ok           0.0 s  12000 rpm  50.0 %
   fan4-inlet  ok           0.0 s  12000 rpm  50.0 %
   fan4-outlet ok           0.0 s  12000 rpm  50.0 %
   fan5        ok           0.0 s  12000 rpm  50.0 %
   fan5-inlet  ok           0.0 s  12000 rpm  50.0 %
 q quit  ? help  / filter  Enter open, fold                         1-22 of 100
)",
      withoutTimes );
   EXPECT_TRUE( watch.screen().isColoured() );
}

TEST_F( WatchScreenTest, FoldsFiltersOpensAndComesBack ) {
   DrawnProgram watch( command(), {}, 132, 50 );
   watch.waitFor( "OK: all 174" );
   watch.type( "f" ); // every section is a line
   watch.waitUntilGone( "psu1" );
   for ( const char *title : { "▸ CAUSES", "▸ SUPPLIES  2", "▸ FANS  19", "▸ TEMPERATURES  9",
                               "▸ CAGES  86: 28 absent", "▸ LEDS  8", "▸ BUSES", "▸ THE REST" } )
      watch.waitFor( title );
   watch.type( "\t\t\r" ); // the third opens
   EXPECT_THAT( watch.waitFor( "fan1-inlet" ), Not( HasSubstr( "temp-cpu" ) ) );
   watch.type( "/TEMP-c" );
   watch.waitFor( "/TEMP-c_" );
   watch.waitFor( "temp-cpu" );
   EXPECT_THAT( watch.waitUntilGone( "fan1" ), Not( HasSubstr( "temp-rear" ) ) );
   watch.type( "\r\x1b[H\x1b[B\r" ); // ends typing; first, next, open
   for ( const char *words : { "temp-cpu: temp_sensor, ok", "temperature: 47.0 °C, ok",
                               "limits: warning above", "▄▄▄", "last, " } )
      watch.waitFor( words );
   watch.type( "q" );
   watch.waitFor( "only what has \"TEMP-c\"" );
   watch.type( "\x1b" );
   watch.waitFor( "▸ CAGES" );
   watch.type( "?" );
   watch.waitFor( "Signs, which stand beside the colours" );
   watch.type( "qq" );
   EXPECT_EQ( watch.wait(), 0 );
}

TEST_F( WatchScreenTest, CagesHaveTheirLightAndAModuleItsWholeMemory ) {
   DrawnProgram watch( command(), {}, 132, 50 );
   watch.waitFor( "OK: all 174" );
   watch.type( "/qsfp1\r" );
   watch.waitFor( "qsfp1  # -1.1 -1." );
   watch.type( "\x1b[H\x1b[B\r" );
   watch.waitFor( "qsfp1: xcvr, ok" );
   watch.waitFor( "vendor        Orbis Optics" );
}

TEST_F( WatchScreenTest, ShowsWhatGoesWrongAndWhatThatExplains ) {
   DrawnProgram watch( command(), { "NO_COLOR=1" }, 132, 50 );
   watch.waitFor( "OK: all 174" );
   board.smbus( { "sim", "pull", "psu2" } );
   watch.waitFor( "psu2-slot absent" );
   watch.waitFor( "explains psu2, psu2-status" );
   watch.waitFor( "because of psu2-slot absent" );
   board.smbus( { "sim", "set", "temp-cpu", "temperature", "99" } );
   watch.waitFor(
      "!! critical   temp-cpu temperature limit: 99 °C is above the critical limit of" );
   EXPECT_FALSE( watch.screen().isColoured() ); // the signs say it without
}

TEST_F( WatchScreenTest, ScrollsByKeysAndWithTheWindow ) {
   DrawnProgram watch( command(), {} );
   watch.waitFor( "1-22 of" );
   watch.type( "\x1b[F" ); // End
   watch.waitFor( "sfp1-eeprom" );
   watch.type( "\x1b[H" ); // Home
   watch.waitFor( "1-22 of" );
   watch.type( "\x1b[6~" ); // a page down
   watch.waitUntilGone( "SUPPLIES" );
   watch.type( "\x1b[5~" );
   watch.waitFor( "SUPPLIES" );
   watch.resize( 100, 40 );
   watch.waitFor( "1-38 of" );
   watch.waitFor( "W  output 21.5 A" ); // on one line now
   watch.resize( 30, 5 );
   watch.waitFor( "1-3 of" );
   watch.resize( 80, 24 );
   watch.waitFor( "1-22 of" );
}

TEST_F( WatchScreenTest, WritesOnlyWhatHasChanged ) {
   DrawnProgram watch( command(), {} );
   watch.waitFor( "1-22 of" );
   watch.type( "?" );
   watch.waitFor( "Signs" );
   watch.type( "?" );
   watch.waitFor( "1-22 of" );
   watch.screen().written();
   for ( int i = 0; i < 3; ++i ) { // the clock goes on
      const std::string clock = watch.screen().text().substr( 0, 90 );
      const std::string time =
         std::regex_replace( clock, std::regex( "[^]*([0-9]{2}:[0-9]{2}:[0-9]{2})[^]*" ), "$1" );
      watch.waitUntilGone( time );
   }
   // It has drawn more than ten times.
   EXPECT_LT( watch.screen().written(), 2 * 24u * 80u );
}

TEST_F( WatchScreenTest, SaysThatServeIsGoneAndHowOldAllIsAndGoesOnWhenItIsBack ) {
   DrawnProgram watch( command(), {} );
   watch.waitFor( "OK: all 174" );
   serve->signal( SIGTERM );
   serve->wait();
   EXPECT_THAT( watch.waitFor( "doesn't answer: all of" ), HasSubstr( "!! the serve at" ) );
   watch.waitFor( "2 s old" );
   const auto again = board.serve( { "--period", "0.2" } );
   watch.waitUntilGone( "doesn't answer" );
   watch.waitFor( "OK: all 174" );
}

TEST_F( WatchScreenTest, BringsTheBoardUpItselfAndLeavesItToTheNextServe ) {
   DrawnProgram watch( command(), {} );
   watch.waitFor( "OK: all 174" );
   serve->signal( SIGTERM );
   serve->wait();
   watch.waitFor( "has ended: this command reads" );
   watch.waitFor( "OK: all 116" ); // without the modules
   const auto again = board.serve( { "--period", "0.2" } );
   watch.waitUntilGone( "has ended" );
   watch.waitFor( "OK: all 174" );
   watch.type( "q" );
   EXPECT_EQ( watch.wait(), 0 );
}

TEST_F( WatchScreenTest, ShowsAt80ColumnsWithNothingCut ) {
   board.smbus( { "sim", "nack", "temp-rear" } );
   for ( int i = 0; i < 200 && board.host( { "show" } ).exitCode == 0; ++i ) {
   }
   DrawnProgram show( { ORBIS_HOST, "show", BOARDS "/kelt" }, {}, 80, 300 );
   EXPECT_EQ( show.wait(), 1 );
   EXPECT_THAT( show.bytes(), HasSubstr( "NAME            READING" ) );
   std::istringstream lines( show.bytes() );
   for ( std::string line; std::getline( lines, line ); )
      EXPECT_LE( std::regex_replace( line, std::regex( "°|…|\r|\x1b\\[K" ), "" ).size(), 80u )
         << line;
   EXPECT_THAT( show.screen().text(), HasSubstr( "no acknowledge" ) );
   EXPECT_THAT( show.screen().text(), HasSubstr( "qsfp3 ." ) );
}

} // namespace
