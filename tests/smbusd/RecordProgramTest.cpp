// orbis-smbusd --record and --replay, and orbis-smbus trace FILE, as installed programs.
#include "PrivateFolder.h"
#include "StartedProgram.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

namespace SmbusdTest {

namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using TestSupport::StartedProgram;

class RecordProgramTest : public ::testing::Test {
 protected:
   // Starts a server, sends these requests and returns the answers.
   std::string serve( std::vector<std::string> options,
                      const std::vector<std::vector<std::string>> &questions ) {
      options.insert( options.begin(), { ORBIS_SMBUSD, "--socket", socket } );
      StartedProgram server( options );
      EXPECT_TRUE( server.waitForError( "serving" ) ) << server.errors();
      std::string answers;
      for ( const auto &question : questions )
         answers += ask( question );
      server.signal( SIGTERM );
      EXPECT_EQ( server.wait(), 0 ) << server.errors();
      return answers;
   }
   std::string ask( std::vector<std::string> question ) {
      question.insert( question.begin(), { ORBIS_SMBUS, "--socket", socket } );
      StartedProgram client( question );
      const int code = client.wait();
      return std::to_string( code ) + ": " + client.output() + client.errors();
   }
   TestSupport::PrivateFolder folder;
   const std::string socket = folder.file( "smbus.sock" );
   const std::string recording = folder.file( "night.rec" );
};

TEST_F( RecordProgramTest, ReplaysARecordingWithoutTheBoard ) {
   const std::vector<std::vector<std::string>> questions{
      { "read", "scd(4):1:2:0x48", "0", "--size", "2", "--via", "0x70=1" },
      { "read", "i2c:0:0x49", "0" }, // there is no chip
      { "scan", "scd(4):1:3" }
   };
   const std::string answers = serve( { "--simulate", KELT_BOARD "/topology.json", "--simulation",
                                        KELT_BOARD "/simulation.json", "--record", recording },
                                      questions );
   EXPECT_THAT( answers, HasSubstr( "0: 0x18 0x80\n" ) );
   EXPECT_EQ( serve( { "--replay", recording, "--as-slow" }, questions ), answers );

   const std::string trace = ask( { "trace", recording } );
   EXPECT_THAT( trace, MatchesRegex( "0: recorded from 20..-..-..T..:..:..Z on by orbis-smbusd "
                                     "[^\n]*\n.*" ) );
   EXPECT_THAT( trace, HasSubstr( " scd(4):1:2     3 requests, " ) );
   EXPECT_THAT( trace,
                HasSubstr( "                            send byte 0x01 to 0x70\n"
                           "                            read of 2 bytes from 0x48 register 0x00 -> "
                           "18 80\n"
                           "                            send byte 0x00 to 0x70\n" ) );
   EXPECT_THAT( trace, HasSubstr( "ms, failed: request 1 of 1: read of 1 byte from 0x49" ) );
   EXPECT_THAT( ask( { "--json", "trace", recording } ),
                HasSubstr( "{\"operation\":\"read of 2 bytes from 0x48 register 0x00\","
                           "\"written\":[],\"read\":[24,128]}" ) );
}

TEST_F( RecordProgramTest, AReplayHasAControlSocketButNoBoard ) {
   serve( { "--simulate", KELT_BOARD "/topology.json", "--simulation",
            KELT_BOARD "/simulation.json", "--record", recording },
          {} );
   EXPECT_EQ( serve( { "--replay", recording }, { { "sim", "list" } } ),
              "1: orbis-smbus: no board is simulated\n" );
}

TEST_F( RecordProgramTest, RefusesARoomThatIsTooSmallForLargeTransactions ) {
   StartedProgram small( { ORBIS_SMBUSD, "--replay", recording, "--record", folder.file( "new" ),
                           "--record-keep", "63M" } );
   EXPECT_EQ( small.wait(), 2 );
   EXPECT_THAT( small.errors(), HasSubstr( "--record-keep: less than 64M has no room" ) );
}

TEST_F( RecordProgramTest, NamesTheByteWhereAFileIsNotARecording ) {
   const std::string file = folder.write( "text", std::string( 1, '\0' ) );
   EXPECT_THAT( ask( { "trace", file } ),
                HasSubstr( file + ": byte 0: not an entry of a recording" ) );
   StartedProgram server( { ORBIS_SMBUSD, "--socket", socket, "--replay", file } );
   EXPECT_EQ( server.wait(), 1 );
   EXPECT_THAT( server.errors(), HasSubstr( file + ": byte 0: not an entry of a recording" ) );
}

TEST_F( RecordProgramTest, AReplayExcludesABoardAndRoutes ) {
   StartedProgram both( { ORBIS_SMBUSD, "--replay", recording, "--routes", "x" } );
   EXPECT_EQ( both.wait(), 2 );
}

} // namespace

} // namespace SmbusdTest
