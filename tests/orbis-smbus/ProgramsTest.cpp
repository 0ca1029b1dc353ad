// The installed programs orbis-smbusd and orbis-smbus, on the simulated Kelt board.
#include "PrivateFolder.h"
#include "StartedProgram.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <memory>

namespace SmbusdTest {

namespace {

using ::testing::HasSubstr;
using TestSupport::StartedProgram;

class ProgramsTest : public ::testing::Test {
 protected:
   std::unique_ptr<StartedProgram> startServer() {
      auto program = std::make_unique<StartedProgram>( std::vector<std::string>{
         ORBIS_SMBUSD, "--socket", path, "--simulate", KELT_BOARD "/topology.json", "--simulation",
         KELT_BOARD "/simulation.json" } );
      EXPECT_TRUE( program->waitForError( "serving" ) ) << program->errors();
      return program;
   }
   // The exit code, then the output.
   std::string run( std::vector<std::string> arguments ) {
      arguments.insert( arguments.begin(), { ORBIS_SMBUS, "--socket", path } );
      StartedProgram program( arguments );
      const int code = program.wait();
      errors = program.errors();
      return std::to_string( code ) + "\n" + program.output();
   }

   TestSupport::PrivateFolder folder;
   const std::string path = folder.file( "smbus.sock" );
   std::string errors; // of the last run
};

TEST_F( ProgramsTest, StopsCleanlyOnSigtermAndSigint ) {
   for ( const int number : { SIGTERM, SIGINT } ) {
      const auto server = startServer();
      ASSERT_TRUE( std::filesystem::is_socket( path ) );
      ASSERT_EQ( run( { "read", "i2c:0:0x48" } ), "0\n0x2f\n" );
      server->signal( number );
      EXPECT_EQ( server->wait(), 0 ) << server->errors();
      EXPECT_FALSE( std::filesystem::exists( path ) );
   }
}

TEST_F( ProgramsTest, StopsAlthoughATransferDoesNotEnd ) {
   StartedProgram server( { ORBIS_SMBUSD, "--socket", path, "--simulate",
                            KELT_BOARD "/topology.json", "--simulation",
                            KELT_BOARD "/simulation.json", "--transaction-limit", "10" } );
   ASSERT_TRUE( server.waitForError( "serving" ) );
   ASSERT_EQ( run( { "sim", "slow", "temp-cpu", "60000" } ), "0\n" );
   StartedProgram client( { ORBIS_SMBUS, "--socket", path, "read", "i2c:0:0x48" } );
   while ( run( { "--json", "sim", "list" } ).find( "\"transfers\":1," ) == std::string::npos ) {
   } // until the transfer runs
   server.signal( SIGTERM );
   EXPECT_EQ( server.wait(), 0 );
   EXPECT_THAT( server.errors(), HasSubstr( "a bus is stuck; its transaction is abandoned" ) );
   EXPECT_FALSE( std::filesystem::exists( path ) );
}

TEST_F( ProgramsTest, RefusesToExportAnUnknownBus ) {
   const auto exportBus = [&]( const char *bus ) {
      StartedProgram server( { ORBIS_SMBUSD, "--socket", path, "--simulate",
                               KELT_BOARD "/topology.json", "--simulation",
                               KELT_BOARD "/simulation.json", "--export-adapter", bus } );
      const int code = server.wait();
      errors = server.errors();
      return code;
   };
   EXPECT_EQ( exportBus( "i2c:9" ), 1 );
   EXPECT_THAT( errors, HasSubstr( "--export-adapter: the simulated board has no i2c:9" ) );
   EXPECT_EQ( exportBus( "nonsense" ), 2 );
   EXPECT_THAT( errors, HasSubstr( "not a bus: nonsense" ) );
}

TEST_F( ProgramsTest, ReplacesTheSocketOfAKilledServer ) {
   startServer()->signal( SIGKILL );
   ASSERT_TRUE( std::filesystem::is_socket( path ) );
   const auto server = startServer();
   EXPECT_EQ( run( { "read", "i2c:0:0x48" } ), "0\n0x2f\n" );
}

TEST_F( ProgramsTest, RefusesToStartBesideARunningServer ) {
   const auto server = startServer();
   StartedProgram second( { ORBIS_SMBUSD, "--socket", path, "--simulate",
                            KELT_BOARD "/topology.json", "--simulation",
                            KELT_BOARD "/simulation.json" } );
   EXPECT_EQ( second.wait(), 1 );
   EXPECT_THAT( second.errors(), HasSubstr( path + ": another server is running" ) );
}

TEST_F( ProgramsTest, NamesThePlaceOfAnErrorInABoardFile ) {
   const std::string bad = folder.write( "simulation.json", "{ \"chips\": [ 5 ] }" );
   StartedProgram server( { ORBIS_SMBUSD, "--socket", path, "--simulate",
                            KELT_BOARD "/topology.json", "--simulation", bad } );
   EXPECT_EQ( server.wait(), 1 );
   EXPECT_THAT( server.errors(), HasSubstr( bad + ":1:14: 5 is not an object" ) );
}

TEST_F( ProgramsTest, ExitWithCode2AfterWrongUsage ) {
   EXPECT_EQ( StartedProgram( { ORBIS_SMBUSD } ).wait(), 2 );
   EXPECT_EQ( StartedProgram( { ORBIS_SMBUSD, "--simulate", "x" } ).wait(), 2 );
   EXPECT_EQ( run( {} ), "2\n" );
   EXPECT_EQ( run( { "read", "nonsense" } ), "2\n" );
   EXPECT_THAT( errors, HasSubstr( "not an address: nonsense" ) );
   EXPECT_EQ( run( { "read", "i2c:0:0x80" } ), "2\n" );
   EXPECT_EQ( run( { "scan", "i2c" } ), "2\n" );
   EXPECT_EQ( run( { "read", "i2c:0:0x48", "0", "--size", "huge" } ), "2\n" );
   EXPECT_EQ( run( { "read", "i2c:0:0x48", "0", "--via", "0x70" } ), "2\n" );
   EXPECT_EQ( run( { "write", "i2c:0:0x48", "3", "256" } ), "2\n" );
   EXPECT_EQ( run( { "write", "i2c:0:0x48", "3", "1", "--size", "2" } ), "2\n" );
   EXPECT_EQ( run( { "write", "i2c:0:0x48", "3", "--size", "block" } ), "2\n" );
   EXPECT_EQ( run( { "dump", "i2c:0:0x48", "--size", "block" } ), "2\n" );
}

TEST_F( ProgramsTest, PrintTheirVersionAndHelp ) {
   for ( const char *option : { "--version", "-V" } )
      EXPECT_EQ( run( { option } ), "0\norbis-smbus " ORBIS_VERSION "\n" );
   EXPECT_THAT( run( { "--help" } ), HasSubstr( "Exit codes" ) );
   for ( const char *option : { "--version", "-V", "--help" } )
      EXPECT_EQ( StartedProgram( { ORBIS_SMBUSD, option } ).wait(), 0 );
}

TEST_F( ProgramsTest, ExitWithCode3WithoutAServer ) {
   EXPECT_EQ( run( { "read", "i2c:0:0x48" } ), "3\n" );
   EXPECT_THAT( errors, HasSubstr( "there is no such socket; is its server running?" ) );
}

TEST_F( ProgramsTest, PrintTheServersErrorWhenATransferFails ) {
   const auto server = startServer();
   EXPECT_EQ( run( { "read", "i2c:0:0x49", "0" } ), "1\n" );
   const std::string words = "request 1 of 1: read of 1 byte from 0x49 register 0x00 on i2c:0: no "
                             "acknowledge of the address";
   EXPECT_EQ( errors, "orbis-smbus: " + words + "\n" );
   EXPECT_EQ( run( { "--json", "read", "i2c:0:0x49", "0" } ),
              "1\n{\"error\":\"" + words + "\"}\n" );
   EXPECT_EQ( run( { "scan", "i2c:5" } ), "1\n" );
   EXPECT_EQ( run( { "dump", "i2c:0:0x49", "--last", "3" } ), "1\n" );
   EXPECT_EQ( run( { "read", "i2c:0:0x48", "0", "--pec" } ), "1\n" );
}

TEST_F( ProgramsTest, ReadInEverySize ) {
   const auto server = startServer();
   EXPECT_EQ( run( { "read", "scd(4):1:3:0x4a", "0" } ), "0\n0xfd\n" );
   EXPECT_EQ( run( { "read", "scd(4):1:3:0x4a", "0", "--size", "word" } ), "0\n0x00fd\n" );
   EXPECT_EQ( run( { "read", "scd(4):1:3:0x4a", "0", "--size", "2" } ), "0\n0xfd 0x00\n" );
   EXPECT_EQ(
      run( { "--json", "read", "scd(4):1:3:0x4a", "0", "--size", "word" } ),
      "0\n{\"address\":\"scd(4):1:3:0x4a\",\"register\":0,\"data\":[253,0],\"word\":253}\n" );
   EXPECT_EQ( run( { "--json", "read", "scd(4):1:3:0x4a" } ),
              "0\n{\"address\":\"scd(4):1:3:0x4a\",\"data\":[253]}\n" );
}

TEST_F( ProgramsTest, WriteBytesAndWords ) {
   const auto server = startServer();
   EXPECT_EQ( run( { "write", "i2c:0:0x48", "3", "0x19", "0x80" } ), "0\n" );
   EXPECT_EQ( run( { "read", "i2c:0:0x48", "3", "--size", "2" } ), "0\n0x19 0x80\n" );
   EXPECT_EQ( run( { "write", "i2c:0:0x48", "2", "0x8018", "--size", "word" } ), "0\n" );
   EXPECT_EQ( run( { "read", "i2c:0:0x48", "2", "--size", "2" } ), "0\n0x18 0x80\n" );
   EXPECT_EQ( run( { "--json", "write", "i2c:0:0x48", "2" } ),
              "0\n{\"address\":\"i2c:0:0x48\"}\n" );
   EXPECT_EQ( run( { "read", "i2c:0:0x48" } ), "0\n0x18\n" ); // the pointer is at register 2
}

TEST_F( ProgramsTest, ReachThroughMuxesAndCloseThemAgain ) {
   const auto server = startServer();
   EXPECT_EQ( run( { "read", "scd(4):1:2:0x48", "0", "--size", "2", "--via", "0x70=1" } ),
              "0\n0x18 0x80\n" );
   EXPECT_EQ( run( { "read", "scd(4):1:2:0x49", "0", "--via", "0x70=4", "--via", "0x71=128" } ),
              "0\n0x3a\n" );
   EXPECT_EQ( run( { "read", "scd(4):1:2:0x70" } ), "0\n0x00\n" );
   EXPECT_EQ( run( { "read", "scd(4):1:2:0x71", "--via", "0x70=4" } ), "0\n0x00\n" );
   EXPECT_EQ( run( { "read", "scd(4):1:2:0x55", "0", "--via", "0x70=1" } ), "1\n" );
   EXPECT_EQ( run( { "read", "scd(4):1:2:0x70" } ), "0\n0x00\n" );
}

TEST_F( ProgramsTest, DumpATableOfRegisters ) {
   const auto server = startServer();
   EXPECT_EQ( run( { "dump", "scd(4):1:3:0x4a", "--last", "3" } ),
              "0\n"
              "      0  1  2  3  4  5  6  7  8  9  a  b  c  d  e  f \n"
              "000: fd 00 4b 50                                        ..KP            \n" );
   EXPECT_EQ( run( { "dump", "scd(4):1:3:0x4a", "--first", "2", "--last", "3", "--size", "word" } ),
              "0\n"
              "        0    1    2    3    4    5    6    7 \n"
              "000:           004b 0050                     \n" );
   EXPECT_EQ( run( { "--json", "dump", "scd(4):1:3:0x4a", "--first", "2", "--last", "3" } ),
              "0\n{\"address\":\"scd(4):1:3:0x4a\",\"registers\":[{\"register\":2,\"data\":[75]},"
              "{\"register\":3,\"data\":[80]}]}\n" );
}

TEST_F( ProgramsTest, ScanABusAndShowCollisions ) {
   const auto server = startServer();
   const std::string found = run( { "scan", "scd(4):1:2", "--via", "0x70=3" } );
   EXPECT_THAT( found, HasSubstr( "40:  -- -- -- -- -- -- -- -- ?? -- -- -- -- -- -- --\n" ) );
   EXPECT_THAT( found, HasSubstr( "70:  70 -- -- -- -- -- -- --" ) );
   EXPECT_THAT( found, HasSubstr( "collision of temp-front and temp-rear" ) );
   EXPECT_EQ( run( { "--json", "scan", "i2c:0" } ),
              "0\n{\"bus\":\"i2c:0\",\"found\":[{\"address\":72}]}\n" );
}

} // namespace

} // namespace SmbusdTest
