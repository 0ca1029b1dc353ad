#include "support/ScriptedHost.h"

#include <csignal>
#include <gmock/gmock.h>

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

// The commands for one object, while no serve runs.
class ActTest : public ::testing::Test {
 protected:
   int run( std::vector<std::string> arguments ) {
      arguments.insert( arguments.end(), { "--board", SCRIPTED_BOARD } );
      folder.remove( "calls" );
      ScriptedHost program( folder, arguments );
      const int code = program.wait();
      out = folder.read( "out.txt" );
      err = folder.read( "err.txt" );
      return code;
   }
   std::string calls() const { return folder.read( "calls" ); }

   const TestSupport::PrivateFolder folder;
   std::string out, err;
};

TEST_F( ActTest, DrivesOneObjectOfEveryKind ) {
   EXPECT_EQ( run( { "fan", "fan", "9000" } ), 0 ) << err;
   EXPECT_THAT( calls(), HasSubstr( "fan.set_rpm 9000\n" ) );
   EXPECT_EQ( run( { "led", "led", "bad" } ), 0 ) << err;
   EXPECT_THAT( calls(), HasSubstr( "led.set_light_setting 3\n" ) );
   EXPECT_EQ( run( { "xcvr", "qsfp", "reset", "on" } ), 0 ) << err;
   EXPECT_THAT( calls(), HasSubstr( "qsfp.set_reset 1\n" ) );
   EXPECT_EQ( run( { "gpio", "gpio", "set" } ), 0 ) << err;
   EXPECT_THAT( calls(), HasSubstr( "gpio.bit_set\n" ) );
   EXPECT_EQ( run( { "system", "poweroff", "--yes" } ), 0 ) << err;
   EXPECT_THAT( calls(), HasSubstr( "poweroff\n" ) );
}

TEST_F( ActTest, PrintsWhatAnOperationReads ) {
   folder.write( "smbus.read_byte", "165" );
   EXPECT_EQ( run( { "smbus", "raw", "read-byte", "0x10" } ), 0 ) << err;
   EXPECT_THAT( calls(), HasSubstr( "smbus.read_byte 16\n" ) );
   EXPECT_EQ( out, "0xa5\n" );
   EXPECT_EQ( run( { "gpio", "gpio", "read" } ), 0 );
   EXPECT_EQ( out, "1\n" );
}

TEST_F( ActTest, BringsUpOnlyWhatTheObjectNeeds ) {
   folder.write( "temp.add", "hang" ); // another device
   EXPECT_EQ( run( { "led", "led", "good" } ), 0 ) << err;
   EXPECT_THAT( calls(), Not( HasSubstr( "temp." ) ) );
   EXPECT_THAT( calls(), HasSubstr( "fan.add\n" ) ); // this object makes the LED's device
}

TEST_F( ActTest, SaysWhatIsNotSupportedAndWhatFailed ) {
   EXPECT_EQ( run( { "xcvr", "qsfp", "lpmode", "on" } ), 1 );
   EXPECT_THAT( err, HasSubstr( "qsfp: the driver doesn't support this" ) );
   EXPECT_EQ( run( { "system", "reload-cause" } ), 1 );
   EXPECT_THAT( err,
                HasSubstr( "system: the driver doesn't support this: status 5 (not provided)" ) );
   folder.write( "fan.set_rpm", "status 6 execute: failure in response nack" );
   EXPECT_EQ( run( { "fan", "fan", "1" } ), 1 );
   EXPECT_THAT( err, HasSubstr( "fan: failed: status 6 (transaction): nack" ) );
   folder.write( "led.set_light_setting", "assert" );
   EXPECT_EQ( run( { "led", "led", "good" } ), 1 );
   EXPECT_THAT( err, HasSubstr( "Assertion `chipAnswers' failed." ) );
}

TEST_F( ActTest, RefusesInvalidWordsAndNames ) {
   EXPECT_EQ( run( { "led", "led", "green" } ), 2 );
   EXPECT_THAT( err, HasSubstr( "\"green\" is not one of: off, good" ) );
   EXPECT_EQ( run( { "led", "fan", "good" } ), 2 );
   EXPECT_THAT( err, HasSubstr( "the board has no led \"fan\"" ) );
   EXPECT_EQ( calls(), "" );
}

TEST_F( ActTest, CutsPowerOnlyAfterAQuestion ) {
   EXPECT_EQ( run( { "system", "poweroff" } ), 2 );
   EXPECT_EQ( calls(), "" );
   ScriptedHost refused( folder, { "system", "--board", SCRIPTED_BOARD, "poweroff" },
                         ScriptedHost::Output::Terminal );
   refused.waitForScreen( "[y/N]" );
   refused.type( "n\n" );
   EXPECT_EQ( refused.wait(), 2 );
   EXPECT_EQ( calls(), "" );
   ScriptedHost agreed( folder, { "system", "--board", SCRIPTED_BOARD, "poweroff" },
                        ScriptedHost::Output::Terminal );
   agreed.waitForScreen( "[y/N]" );
   agreed.type( "y\n" );
   EXPECT_EQ( agreed.wait(), 0 );
   EXPECT_THAT( calls(), HasSubstr( "poweroff\n" ) );
}

TEST_F( ActTest, RunsUntilASignalWhileAnLedBlinks ) {
   ScriptedHost program( folder, { "led", "led", "beacon", "--board", SCRIPTED_BOARD } );
   folder.waitFor( "err.txt", "led blinks until Ctrl-C" );
   EXPECT_THAT( calls(), HasSubstr( "led.set_light_setting 6\n" ) );
   program.signal( SIGINT );
   EXPECT_EQ( program.wait(), 0 );
}

} // namespace
