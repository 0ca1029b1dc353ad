// orbis-smbus sim and trace on the simulated Kelt board.
#include "PrivateFolder.h"
#include "RawClient.h"
#include "StartedProgram.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <memory>

namespace SmbusdTest {

namespace {

using namespace TestSupport;

using ::testing::HasSubstr;
using ::testing::StartsWith;
using TestSupport::StartedProgram;
using Words = std::vector<std::string>;

class SimulationTest : public ::testing::Test {
 protected:
   SimulationTest() { EXPECT_TRUE( server.waitForError( "serving" ) ) << server.errors(); }
   // The exit code, then the output.
   std::string run( Words arguments ) {
      arguments.insert( arguments.begin(), { ORBIS_SMBUS, "--socket", path } );
      StartedProgram program( arguments );
      const int code = program.wait();
      errors = program.errors();
      return std::to_string( code ) + "\n" + program.output();
   }
   std::string sim( Words words ) {
      words.insert( words.begin(), "sim" );
      return run( std::move( words ) );
   }
   std::string play( const std::string &scenario ) {
      return sim( { "play", folder.write( "scenario", scenario ) } );
   }

   TestSupport::PrivateFolder folder;
   const std::string path = folder.file( "smbus.sock" );
   StartedProgram server{ { ORBIS_SMBUSD, "--socket", path, "--speed", "0", "--simulate",
                            KELT_BOARD "/topology.json", "--simulation",
                            KELT_BOARD "/simulation.json" } };
   std::string errors; // of the last run
};

TEST_F( SimulationTest, ReadsAndSetsWhatChipsHold ) {
   EXPECT_EQ( sim( { "get", "temp-cpu", "temperature" } ), "0\n47 C\n" );
   EXPECT_EQ( sim( { "set", "temp-cpu", "temperature", "-12.5" } ), "0\n" );
   EXPECT_EQ( sim( { "get", "temp-cpu", "temperature" } ), "0\n-12.5 C\n" );
   EXPECT_EQ( run( { "read", "i2c:0:0x48", "0", "--size", "2" } ), "0\n0xf3 0x80\n" );
   EXPECT_EQ( run( { "--json", "sim", "get", "psu1", "line" } ),
              "0\n{\"name\":\"line\",\"value\":230.0,\"unit\":\"V\",\"settable\":true}\n" );
}

TEST_F( SimulationTest, ListsChipsAndModulesWithTheClock ) {
   const std::string list = sim( { "list" } );
   EXPECT_THAT( list, StartsWith( "0\n0.000 s, speed 0, power on, 0 transfers of 0 bytes\n" ) );
   EXPECT_THAT( list, HasSubstr( "module spare1           out\n" ) );
   EXPECT_THAT( list, HasSubstr( "chip temp-front         LM75         0x48\n" ) );
   EXPECT_THAT( list, HasSubstr( "   fan1.inlet rpm           12047.1 rpm\n" ) );
   EXPECT_THAT( run( { "--json", "sim", "list" } ),
                HasSubstr( "{\"name\":\"psu1\",\"kind\":\"PmbusSupply\",\"address\":88" ) );
}

TEST_F( SimulationTest, PullsAndInsertsModules ) {
   EXPECT_EQ( sim( { "pull", "psu2" } ), "0\n" );
   EXPECT_EQ( run( { "read", "scd(4):1:4:0x59", "0x88" } ), "1\n" );
   EXPECT_EQ( sim( { "insert", "psu2" } ), "0\n" );
   EXPECT_EQ( run( { "read", "scd(4):1:4:0x59", "0x20" } ), "0\n0x17\n" );
}

TEST_F( SimulationTest, SwitchesFaultsOnAndOff ) {
   EXPECT_EQ( sim( { "nack", "temp-cpu", "1/2" } ), "0\n" );
   EXPECT_EQ( run( { "read", "i2c:0:0x48", "0" } ), "1\n" );
   EXPECT_EQ( run( { "read", "i2c:0:0x48", "0" } ), "0\n0x2f\n" );
   EXPECT_EQ( sim( { "corrupt", "temp-cpu", "0", "0x0f" } ), "0\n" );
   EXPECT_EQ( run( { "--retries", "1", "read", "i2c:0:0x48", "0" } ), "0\n0x20\n" );
   for ( const Words &words : { Words{ "bad-pec", "psu1" },
                                { "stuck", "temp-front" },
                                { "stuck", "temp-front", "clocks" },
                                { "stuck", "temp-front", "reset" },
                                { "slow", "psu1", "5" },
                                { "block-count", "psu1", "3" },
                                { "answer-size", "temp-cpu", "2" },
                                { "all-ones", "temp-rear" },
                                { "bad-checksum", "sfp1-eeprom" },
                                { "stuck-page", "qsfp1-eeprom", "3" },
                                { "wrong-page", "qsfp2-eeprom", "0x02" },
                                { "busy", "qsfp4-eeprom", "2000" } } )
      EXPECT_EQ( sim( words ), "0\n" ) << words[0];
   EXPECT_EQ( sim( { "clear", "temp-cpu" } ), "0\n" );
   EXPECT_EQ( run( { "read", "i2c:0:0x48", "0" } ), "0\n0x2f\n" );
}

TEST_F( SimulationTest, StepsTheClock ) {
   EXPECT_EQ( run( { "write", "scd(4):1:5:0x2e", "0x30", "0xff" } ), "0\n" );
   EXPECT_EQ( sim( { "get", "fan1.inlet", "rpm" } ), "0\n12047.1 rpm\n" );
   EXPECT_EQ( sim( { "step", "60" } ), "0\n" );
   EXPECT_EQ( sim( { "get", "fan1.inlet", "rpm" } ), "0\n24000 rpm\n" );
   EXPECT_EQ( sim( { "speed", "60" } ), "0\n" );
   EXPECT_THAT( sim( { "list" } ), HasSubstr( "speed 60, power on" ) );
}

TEST_F( SimulationTest, SwitchesThePowerOffAndOn ) {
   EXPECT_EQ( run( { "write", "i2c:0:0x48", "3", "0x19", "0x80" } ), "0\n" );
   EXPECT_EQ( sim( { "power", "off" } ), "0\n" );
   EXPECT_EQ( run( { "read", "i2c:0:0x48", "3" } ), "1\n" );
   EXPECT_EQ( sim( { "power", "on" } ), "0\n" );
   EXPECT_EQ( run( { "read", "i2c:0:0x48", "3" } ), "0\n0x50\n" );
}

TEST_F( SimulationTest, PlaysAScenarioOfAnHourAtOnce ) {
   EXPECT_EQ( play( "# a bad day\n"
                    "at 3s pull psu2\n"
                    "at 6s stall fan3.inlet\n"
                    "expect fan3.inlet rpm 0 within 4s  # at once\n"
                    "at 1800s free fan3.inlet\n"
                    "expect fan3.inlet rpm 13286+-5 within 20s\n"
                    "\n"
                    "at 3600s insert psu2\n"
                    "expect psu2 load 17.25+-0\n" ),
              "0\n"
              "     3.000 at 3s pull psu2\n"
              "     6.000 at 6s stall fan3.inlet\n"
              "     6.000 expect fan3.inlet rpm 0 within 4s  # at once\n"
              "  1800.000 at 1800s free fan3.inlet\n"
              "  1806.300 expect fan3.inlet rpm 13286+-5 within 20s\n"
              "  3600.000 at 3600s insert psu2\n"
              "  3600.000 expect psu2 load 17.25+-0\n" );
}

TEST_F( SimulationTest, EndsAScenarioAtTheFirstLineThatFails ) {
   EXPECT_EQ( play( "at 1s pull psu2\nexpect fan3.inlet rpm 0 within 250ms\nat 2s insert psu2\n" ),
              "1\n     1.000 at 1s pull psu2\n" );
   EXPECT_THAT( errors, HasSubstr( "scenario:2: rpm of fan3.inlet is 13286" ) );
   EXPECT_THAT( errors, HasSubstr( ", expected 0" ) );
   EXPECT_EQ( play( "at 1s pull psu2\n" ), "1\n" );
   EXPECT_THAT( errors, HasSubstr( "scenario:1: psu2 is not inserted" ) );
   EXPECT_EQ( play( "at 1s insert psu2\nat noon pull psu2\n" ), "1\n" );
   EXPECT_THAT( errors, HasSubstr( "scenario:2: noon is not a time such as 3s or 250ms" ) );
}

TEST_F( SimulationTest, TracesEveryTransferWithTheChipsName ) {
   StartedProgram trace( { ORBIS_SMBUS, "--socket", path, "trace" } );
   StartedProgram lines( { ORBIS_SMBUS, "--socket", path, "--json", "trace" } );
   // A program traces as soon as it has printed a transfer.
   const auto listens = [&]( StartedProgram &program ) {
      do
         run( { "read", "i2c:0:0x48" } );
      while ( !program.hasOutput() );
   };
   listens( trace );
   listens( lines );
   run( { "read", "scd(4):1:2:0x48", "0", "--size", "2", "--via", "0x70=1" } );
   run( { "write", "i2c:0:0x49", "3", "0x19" } );
   server.signal( SIGTERM );
   EXPECT_EQ( trace.wait(), 3 );
   EXPECT_THAT( trace.output(),
                HasSubstr( "    0.000000 scd(4):1:2     mux-main         send byte 0x01 to 0x70\n"
                           "    0.000000 scd(4):1:2     temp-front       read of 2 bytes from 0x48 "
                           "register 0x00 -> 18 80\n"
                           "    0.000000 scd(4):1:2     mux-main         send byte 0x00 to 0x70\n"
                           "    0.000000 i2c:0          -                write of 1 byte to 0x49 "
                           "register 0x03: 19: no acknowledge of the address\n" ) );
   EXPECT_EQ( lines.wait(), 3 );
   EXPECT_THAT(
      lines.output(),
      HasSubstr( "{\"seconds\":0.0,\"bus\":\"scd(4):1:2\",\"chip\":\"temp-front\","
                 "\"address\":72,\"operation\":\"read of 2 bytes from 0x48 register "
                 "0x00\",\"written\":[],\"read\":[24,128],\"error\":\"\",\"lost\":0}\n" ) );
}

TEST_F( SimulationTest, PrintsTheServersReasonWhenACommandFails ) {
   EXPECT_EQ( sim( { "pull", "psu3" } ), "1\n" );
   EXPECT_THAT( errors, HasSubstr( "no module is called psu3" ) );
   EXPECT_EQ( sim( { "set", "psu1", "line", "400" } ), "1\n" );
   EXPECT_EQ( sim( { "play", folder.file( "none" ) } ), "1\n" );
   EXPECT_THAT( errors, HasSubstr( "none: can't be read" ) );
}

TEST_F( SimulationTest, NamesAnUnknownCommandAndTheKnownOnes ) {
   EXPECT_EQ( sim( { "explode" } ), "2\n" );
   EXPECT_THAT( errors, HasSubstr( "explode is not a command. Commands: list, get, set, pull," ) );
   EXPECT_EQ( sim( { "isnert", "psu1" } ), "2\n" );
   EXPECT_THAT( errors, HasSubstr( "isnert is not a command (did you mean \"insert\"?)" ) );
   EXPECT_EQ( run( { "raed", "i2c:0:0x48" } ), "2\n" );
   EXPECT_THAT( errors,
                HasSubstr( "raed is not a command (did you mean \"read\"?). Commands: read, " ) );
   EXPECT_EQ( play( "at 1s explode psu1\n" ), "1\n" );
   EXPECT_THAT( errors, HasSubstr( "scenario:1: explode is not a command. Commands: list, " ) );
}

TEST_F( SimulationTest, NamesTheArgumentThatIsWrong ) {
   const std::pair<Words, const char *> rows[] = {
      { { "pull" }, "MODULE is required" },
      { { "pull", "psu1", "psu2" }, "psu2" },
      { { "set", "psu1", "line", "much" }, "VALUE: much is not a number" },
      { { "set", "psu1", "line", "nan" }, "VALUE: nan is not a number" },
      { { "power", "maybe" }, "STATE: maybe not in {on,off,cycle}" },
      { { "nack", "psu1", "often" }, "N/M: often is not N/M with N at most M, for example 1/50" },
      { { "nack", "psu1", "3/2" }, "N/M: 3/2 is not N/M" },
      { { "nack", "psu1", "0/0" }, "N/M: 0/0 is not N/M" },
      { { "slow", "psu1", "60001" }, "MS: 60001 is not a number from 0 to 60000" },
      { { "block-count", "psu1", "256" }, "COUNT: 256 is not a number from 0 to 255" },
      { { "answer-size", "psu1", "8193" }, "BYTES: 8193 is not a number from 0 to 8192" },
      { { "stuck-page", "qsfp1-eeprom", "256" }, "PAGE: 256 is not a number from 0 to 255" },
      { { "wrong-page", "qsfp1-eeprom" }, "PAGE is required" },
      { { "busy", "qsfp1-eeprom", "60001" }, "MS: 60001 is not a number from 0 to 60000" },
      { { "corrupt", "psu1", "0", "0" }, "MASK: 0 is not a number from 1 to 255" },
      { { "step", "-1" }, "SECONDS: -1 is not a number from 0 to 31536000" },
      { { "speed", "1000001" }, "N: 1000001 is not a number from 0 to 1000000" },
   };
   for ( const auto &[words, complaint] : rows ) {
      EXPECT_EQ( sim( words ), "2\n" ) << complaint;
      EXPECT_THAT( errors, HasSubstr( complaint ) );
   }
   EXPECT_EQ( play( "at 1s nack psu1 3/2\n" ), "1\n" );
   EXPECT_THAT( errors, HasSubstr( "scenario:1: N/M: 3/2 is not N/M" ) );
}

TEST_F( SimulationTest, ExplainsEachCommandWithAnExample ) {
   EXPECT_THAT( sim( { "--help" } ), HasSubstr( "nack " ) );
   EXPECT_THAT( sim( { "nack", "--help" } ), HasSubstr( "orbis-smbus sim nack temp-rear 1/50" ) );
   EXPECT_THAT( sim( { "play", "--help" } ), HasSubstr( "expect fan3.inlet rpm 0 within 4s" ) );
}

TEST_F( SimulationTest, SurvivesInvalidRequests ) {
   RawClient endless( path + ".control" );
   endless.send( std::string( 11, '\xFF' ) ); // an endless length
   EXPECT_TRUE( endless.receiveMessage() );   // the reason
   EXPECT_FALSE( endless.receiveMessage() );
   RawClient garbled( path + ".control" );
   garbled.send( "\x02\xFF\xFF" );
   EXPECT_TRUE( garbled.receive() ); // an error; the connection stays open
   garbled.send( std::string( 1, '\0' ) );
   EXPECT_TRUE( garbled.receive() );
   garbled.send( "\x7F" );
   garbled.leave();
   EXPECT_THAT( sim( { "list" } ), StartsWith( "0\n" ) );
}

TEST_F( SimulationTest, LeavesNoSocketBehind ) {
   EXPECT_TRUE( std::filesystem::is_socket( path + ".control" ) );
   server.signal( SIGTERM );
   EXPECT_EQ( server.wait(), 0 );
   EXPECT_FALSE( std::filesystem::exists( path + ".control" ) );
   EXPECT_EQ( sim( { "list" } ), "3\n" );
}

} // namespace

} // namespace SmbusdTest
