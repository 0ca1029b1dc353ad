// The installed program orbis-smbusd with a routes file.
#include "PrivateFolder.h"
#include "StartedProgram.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

namespace SmbusdTest {

namespace {

using ::testing::HasSubstr;
using TestSupport::StartedProgram;

class RoutesProgramTest : public ::testing::Test {
 protected:
   std::string write( const std::string &routes ) {
      return folder.write( "routes.json", "{ \"routes\": [" + routes + "] }" );
   }
   // The exit code, then the output.
   std::string run( const std::vector<std::string> &command ) {
      StartedProgram program( command );
      const int code = program.wait();
      errors = program.errors();
      return std::to_string( code ) + "\n" + program.output();
   }
   TestSupport::PrivateFolder folder;
   const std::string socket = folder.file( "smbus.sock" );
   std::string errors;
};

TEST_F( RoutesProgramTest, ChecksAFileAndDescribesEachBus ) {
   const std::string file = write( R"({ "bus": "scd(4):1:2", "simulated": true },
                { "bus": "i2c:0", "adapter": { "name": "none here" }, "optional": true })" );
   EXPECT_EQ( run( { ORBIS_SMBUSD, "check-routes", file } ),
              "0\nscd(4):1:2       simulated\ni2c:0            not available yet\n" );
   EXPECT_EQ( errors, "i2c:0: there is no adapter named \"none here\"\n" );
}

TEST_F( RoutesProgramTest, NamesEveryMissingAdapter ) {
   const std::string file = write( R"({ "bus": "i2c:0", "adapter": { "name": "none here" } },
                                      { "bus": "i2c:1", "adapter": { "name": "nor here" } })" );
   EXPECT_EQ( run( { ORBIS_SMBUSD, "check-routes", file } ), "1\n" );
   EXPECT_EQ( errors, file + ":1:14: there is no adapter named \"none here\"\n" + file +
                         ":2:39: there is no adapter named \"nor here\"\n" );
   EXPECT_EQ( run( { ORBIS_SMBUSD, "check-routes", "--elsewhere", file } ), "0\n" );
}

TEST_F( RoutesProgramTest, ChecksOnlyTheFileForAnotherMachine ) {
   const std::string file = write( R"({ "bus": "i2c:0", "adapter": { "number": -1 } })" );
   EXPECT_EQ( run( { ORBIS_SMBUSD, "check-routes", "--elsewhere", file } ), "1\n" );
   EXPECT_THAT( errors, HasSubstr( file + ":1:55: -1 is below 0" ) );
}

TEST_F( RoutesProgramTest, DoesNotStartWithoutARequiredAdapter ) {
   const std::string file = write( R"({ "bus": "i2c:0", "adapter": { "name": "none here" } })" );
   EXPECT_EQ( run( { ORBIS_SMBUSD, "--socket", socket, "--routes", file } ), "1\n" );
   EXPECT_THAT( errors, HasSubstr( file + ":1:14: there is no adapter named \"none here\"" ) );
}

TEST_F( RoutesProgramTest, ServesOnlyBussesWithARoute ) {
   const std::string file = write( R"({ "bus": "i2c:0", "simulated": true },
                { "bus": "i2c:1", "adapter": { "name": "none here" }, "optional": true })" );
   StartedProgram server( { ORBIS_SMBUSD, "--socket", socket, "--simulate",
                            KELT_BOARD "/topology.json", "--simulation",
                            KELT_BOARD "/simulation.json", "--routes", file } );
   ASSERT_TRUE( server.waitForError( "serving" ) ) << server.errors();
   const auto read = [&]( const std::string &address ) {
      return run( { ORBIS_SMBUS, "--socket", socket, "--retries", "3", "read", address, "0" } );
   };
   EXPECT_EQ( read( "i2c:0:0x48" ), "0\n0x2f\n" );
   EXPECT_EQ( read( "i2c:1:0x48" ), "1\n" );
   EXPECT_THAT( errors,
                HasSubstr( "there is no adapter named \"none here\"\n" ) ); // and logged once
   EXPECT_EQ( read( "scd(4):1:3:0x4a" ), "1\n" );
   EXPECT_THAT( errors, HasSubstr( "no such bus" ) );
   server.signal( SIGTERM );
   EXPECT_EQ( server.wait(), 0 ) << server.errors();
}

} // namespace

} // namespace SmbusdTest
