#include "support/ScriptedHost.h"
#include "support/StateSchema.h"

#include <algorithm>
#include <csignal>
#include <gmock/gmock.h>

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class ProgramTest : public ::testing::Test {
 protected:
   // Runs to the end.
   int run( const std::vector<std::string> &arguments ) {
      ScriptedHost program( folder, arguments );
      const int code = program.wait();
      out = folder.read( "out.txt" );
      err = folder.read( "err.txt" );
      return code;
   }

   const TestSupport::PrivateFolder folder;
   std::string out, err;
};

TEST_F( ProgramTest, CheckEndsWith0ForAGoodBoardAnd3ForABadOne ) {
   EXPECT_EQ( run( { "check", SCRIPTED_BOARD } ), 0 );
   EXPECT_THAT( out, HasSubstr( "12 objects, no errors" ) );
   folder.write( "objects.json", "[ {" );
   folder.write( "topology.json", "{}" );
   EXPECT_EQ( run( { "check", folder.path() } ), 3 );
   EXPECT_THAT( err, HasSubstr( "objects.json:1:4: Missing a name for object member." ) );
   EXPECT_THAT( err, HasSubstr( "topology.json:1:1: an object is not a list" ) );
}

TEST_F( ProgramTest, CheckPrintsItsFindingsAsJsonToo ) {
   folder.write( "topology.json", "[]" );
   folder.write( "objects.json", "[\n 5 ]" );
   EXPECT_EQ( run( { "check", "--json", folder.path() } ), 3 );
   EXPECT_THAT( out, HasSubstr( R"({"findings":[{"severity":"error","file":")" ) );
   EXPECT_THAT(
      out,
      HasSubstr(
         R"(objects.json","line":2,"column":2,"pointer":"/0","reason":"5 is not an object"})" ) );
   EXPECT_EQ( run( { "check", "--json", SCRIPTED_BOARD } ), 0 );
   EXPECT_EQ( out, "{\"findings\":[],\"busses\":[]}\n" ); // its plug-in's data doesn't tell them
}

TEST_F( ProgramTest, CheckTellsHowBusyEachRootBusIs ) {
   const std::vector<std::string> check = { "--drivers", BOARDS "/libOrbisDriversKelt.drivers.json",
                                            "check", BOARDS "/kelt" };
   const auto with = [&check]( std::vector<std::string> words ) {
      words.insert( words.begin(), check.begin(), check.end() );
      return words;
   };
   EXPECT_EQ( run( check ), 0 );
   EXPECT_THAT( out, HasSubstr( "scd(4):1:4       38 transfers    20.4 ms of 1000 ms    2 %\n" ) );
   EXPECT_THAT( out, HasSubstr( "celestica:1:1    56 transfers    26.9 ms of 1000 ms    3 %\n" ) );
   EXPECT_EQ( run( with( { "--period", "0.1" } ) ), 0 );
   EXPECT_THAT( out, HasSubstr( "scd(4):1:4       38 transfers    20.4 ms of 100 ms   20 %\n" ) );
   EXPECT_EQ( run( with( { "--json" } ) ), 0 );
   EXPECT_THAT( out,
                HasSubstr( R"({"bus":"scd(4):1:2","wires":true,"transfers":11.0,"bits":304.0,)"
                           R"("clock":100000,"seconds":0.00304,"period":1.0,"share":0.00304})" ) );
}

TEST_F( ProgramTest, CheckWarnsOfABusThatIsAlwaysBusy ) {
   std::filesystem::copy( SCRIPTED_BOARD, folder.path(), std::filesystem::copy_options::recursive );
   std::string drivers = folder.read( "libScriptedPlugin.drivers.json" );
   const std::string sensor = R"("temp_sensor": {)";
   drivers.insert( drivers.find( sensor ) + sensor.size(),
                   R"( "transfers": { "batches": [ [ { "read": 200, "times": 50 } ] ] } )" );
   folder.write( "libScriptedPlugin.drivers.json", drivers );
   const std::string path = folder.path() / "libScriptedPlugin.drivers.json";
   EXPECT_EQ( run( { "--drivers", path, "check", folder.path() } ), 0 );
   EXPECT_THAT( err, HasSubstr( "warning: scd(4):1:2 is busy for 92 % of the time when all objects "
                                "are read every 1 s: read them less often (--period)" ) );
   EXPECT_EQ( run( { "--drivers", path, "check", "--strict", folder.path() } ), 3 );
   EXPECT_EQ( run( { "--drivers", path, "check", "--period", "2", folder.path() } ), 0 );
   EXPECT_EQ( err, "" );
}

TEST_F( ProgramTest, CheckRefusesWarningsWhenItIsStrict ) {
   std::filesystem::copy( SCRIPTED_BOARD, folder.path(), std::filesystem::copy_options::recursive );
   std::string topology = folder.read( "topology.json" );
   const std::string label = R"("label": "Raw")";
   topology.insert( topology.find( label ), R"("lable": "x", )" );
   folder.write( "topology.json", topology );
   const std::string drivers = folder.path() / "libScriptedPlugin.drivers.json";
   EXPECT_EQ( run( { "--drivers", drivers, "check", folder.path() } ), 0 );
   EXPECT_THAT( err, HasSubstr( "warning: Raw: unknown key \"lable\" (did you mean \"label\"?)" ) );
   EXPECT_EQ( run( { "--drivers", drivers, "check", "--strict", folder.path() } ), 3 );
}

TEST_F( ProgramTest, NoCommandLetsABadBoardReachThePlugin ) {
   folder.write( "objects.json", "[ { \"type\": \"system\" } ]" );
   folder.write( "topology.json", "[]" );
   for ( const char *command : { "show", "watch", "serve" } )
      EXPECT_EQ( run( { command, folder.path() } ), 3 ) << command;
   EXPECT_EQ( folder.read( "calls" ), "" );
}

TEST_F( ProgramTest, ShowPrintsEveryKindOfObjectInOneTable ) {
   folder.write( "temp.temperature", "-3.5" );
   folder.write( "fan.speed", "4200" );
   folder.write( "slot.presence", "status 1 empty" );
   folder.write( "qsfp.presence", "0" );
   EXPECT_EQ( run( { "show", SCRIPTED_BOARD } ), 0 ) << err;
   for ( const char *line :
         { "NAME    TYPE         READING         VALUE     STATE        AGE    FAULT",
           "temp    temp_sensor  temperature     -3.5 °C   ok           0.",
           "psu     psu          input_current   1.0 A     ok           0.",
           "psu     psu          output_power    -         unsupported  0.",
           "fan     fan          speed           4200 rpm  ok           0.",
           "slot    slot         presence        -         absent       0.",
           "CAGES  # present, . empty", "sfp #F  qsfp .\n",
           "gpio    gpio         bit             1         ok           0.",
           "led     led          -               -         ok           0.",
           "raw     smbus        -               -         ok           0.",
           "system  system       reload_cause    -         unsupported  0." } )
      EXPECT_THAT( out, HasSubstr( line ) );
   EXPECT_EQ( err, "" ); // no progress where there is no terminal
}

TEST_F( ProgramTest, ShowEndsWith1WhenSomethingIsUnreadableAndShowsTheRest ) {
   folder.write( "temp.temperature", "status 6 execute: failure in response no acknowledge" );
   folder.write( "fan.add", "assert" );
   EXPECT_EQ( run( { "show", SCRIPTED_BOARD } ), 1 );
   EXPECT_THAT( out, HasSubstr( "temp    temp_sensor  temperature     -         unreadable   " ) );
   EXPECT_THAT( out, HasSubstr( " s  status 6 (transaction): no acknowledge" ) );
   EXPECT_THAT( out, HasSubstr( "Assertion `chipAnswers' failed." ) );
   EXPECT_THAT( out, HasSubstr( "gpio    gpio" ) );
}

TEST_F( ProgramTest, ShowPrintsJsonThatFitsTheSchema ) {
   folder.write( "temp.temperature", "status 6 execute: failure in response \x01 \xff \"quoted\"" );
   folder.write( "slot.presence", "status 1 x" );
   EXPECT_EQ( run( { "show", SCRIPTED_BOARD, "--json" } ), 1 );
   EXPECT_EQ( stateSchemaFault( out ), "" ) << out;
   EXPECT_THAT( out, HasSubstr( R"("status":6,"fault":"  ? \"quoted\"")" ) );
}

TEST_F( ProgramTest, ShowReportsAMissingServerAndEnds ) {
   folder.write( "init", "status 4 pl_slot_init: socket Setup failed!" );
   EXPECT_EQ( run( { "show", SCRIPTED_BOARD } ), 1 );
   EXPECT_THAT( out, HasSubstr( "status 4 (socket): can't reach the SMBus server yet" ) );
}

TEST_F( ProgramTest, ShowDrawsABarOfWhatTakesLongOnATerminalAndClearsItBeforeTheTable ) {
   folder.write( "gpio.bit", "hang" );
   ScriptedHost program( folder, { "show", SCRIPTED_BOARD, "--limit", "1" },
                         ScriptedHost::Output::Terminal );
   const std::string screen = program.waitForScreen( "reload_cause" );
   EXPECT_THAT( screen, HasSubstr( "[##############################] 12/12 bit" ) );
   EXPECT_THAT( screen, HasSubstr( "\r\x1b[KNAME" ) );
   EXPECT_EQ( program.wait(), 1 );
}

TEST_F( ProgramTest, ShowDrawsNoBarOfWhatIsQuick ) {
   ScriptedHost program( folder, { "show", SCRIPTED_BOARD }, ScriptedHost::Output::Terminal );
   EXPECT_THAT( program.waitForScreen( "reload_cause" ), Not( HasSubstr( "\x1b[K" ) ) );
   EXPECT_EQ( program.wait(), 0 );
}

TEST_F( ProgramTest, PrintsTracesUpToTheGivenLevel ) {
   folder.write( "temp.temperature", "status 6 words of level three" );
   run( { "show", SCRIPTED_BOARD, "-t", "0" } );
   EXPECT_THAT( err, HasSubstr( "trace 0: adding temp" ) );
   EXPECT_THAT( err, Not( HasSubstr( "words of level three" ) ) );
   run( { "-t", "3", "show", SCRIPTED_BOARD } );
   EXPECT_THAT( err, HasSubstr( "trace 3: words of level three" ) );
}

TEST_F( ProgramTest, EndsWith4WhenThePluginCanNotBeLoaded ) {
   for ( const char *command : { "show", "watch", "serve" } ) {
      EXPECT_EQ( run( { command, SCRIPTED_BOARD, "--plugin", "/nowhere.so" } ), 4 ) << command;
      EXPECT_THAT( err, HasSubstr( "/nowhere.so: cannot open shared object file" ) );
   }
}

TEST_F( ProgramTest, EndsWith2ForWrongUsageAndPrintsHelpAndVersion ) {
   EXPECT_EQ( run( {} ), 2 );
   EXPECT_EQ( run( { "show", "/no/such/folder" } ), 2 );
   EXPECT_EQ( run( { "show", SCRIPTED_BOARD, "-t", "8" } ), 2 );
   EXPECT_EQ( run( { "watch", SCRIPTED_BOARD, "--period", "0" } ), 2 );
   for ( const char *period : { "psu", "psu=0", "psu=x", "relay=1", "psu=3601" } )
      EXPECT_EQ( run( { "serve", SCRIPTED_BOARD, "--period-of", period } ), 2 ) << period;
   EXPECT_EQ( run( { "--help" } ), 0 );
   EXPECT_THAT( out, HasSubstr( "write to the board" ) );
   EXPECT_THAT( out, HasSubstr( "Exit codes: 0" ) );
   EXPECT_THAT( out, Not( HasSubstr( "child" ) ) );
   for ( const char *option : { "--version", "-V" } ) {
      EXPECT_EQ( run( { option } ), 0 );
      EXPECT_THAT( out, HasSubstr( "orbis-host 0." ) );
   }
}

TEST_F( ProgramTest, ServeRunsUntilASignalEndsIt ) {
   for ( const int number : { SIGTERM, SIGINT } ) {
      ScriptedHost program( folder, { "serve", SCRIPTED_BOARD, "--period", "0.1" } );
      folder.waitFor( "err.txt", "temp, psu, fan and 8 more: ok" );
      program.signal( number );
      EXPECT_EQ( program.wait(), 0 );
      EXPECT_THAT( folder.read( "err.txt" ), HasSubstr( "ending on signal" ) );
   }
}

TEST_F( ProgramTest, ServeReportsAMissingServerWhileItRetries ) {
   folder.write( "init", "hang" );
   ScriptedHost program( folder, { "serve", SCRIPTED_BOARD, "--period", "0.1" } );
   folder.waitFor( "err.txt",
                   "temp, psu, fan and 9 more: unreadable: can't reach the SMBus server yet" );
}

TEST_F( ProgramTest, ServeLogsWhatFailsAndThatItIsBack ) {
   ScriptedHost program( folder, { "serve", SCRIPTED_BOARD, "--period", "0.1" } );
   size_t at = folder.waitFor( "err.txt", "temp, psu, fan and 8 more: ok" );
   folder.write( "temp.temperature", "status 6 execute: failure in response nack" );
   at = folder.waitFor( "err.txt", "temp: unreadable: status 6 (transaction): nack", at );
   folder.remove( "temp.temperature" );
   folder.waitFor( "err.txt", "temp: ok", at );
}

TEST_F( ProgramTest, ServeLogsAFewLinesAtItsStartAndOneForAChange ) {
   ScriptedHost program( folder, { "serve", SCRIPTED_BOARD, "--period", "0.1" } );
   folder.waitFor( "err.txt", "temp, psu, fan and 8 more: ok" );
   folder.write( "psu.power_ok", "status 6 execute: failure in response nack" );
   folder.waitFor( "err.txt", "psu power_ok: unreadable: status 6 (transaction): nack" );
   folder.remove( "psu.power_ok" );
   folder.waitFor( "err.txt", "psu power_ok: ok" );
   const std::string log = folder.read( "err.txt" );
   EXPECT_LE( std::count( log.begin(), log.end(), '\n' ), 6 ) << log;
}

} // namespace
