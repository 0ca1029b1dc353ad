// Replays a session in which the server reached the board's chips through i2c-dev of a Linux
// kernel. The plug-in must show the same as then. ./test --real records it again, into
// build/release/real/out.
#include "PrivateFolder.h"
#include "Shown.h"
#include "StartedProgram.h"

#include <gmock/gmock.h>

#include <csignal>
#include <cstdlib>

namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Pair;
using TestSupport::StartedProgram;

class RecordedBoardTest : public ::testing::Test {
 protected:
   RecordedBoardTest() {
      setenv( "ORBIS_HOST_SOCKET", folder.file( "host.sock" ).c_str(), 1 );
      EXPECT_TRUE( server.waitForError( "serving" ) ) << server.errors();
   }
   ~RecordedBoardTest() override {
      server.signal( SIGTERM );
      EXPECT_EQ( server.wait(), 0 ) << server.errors();
   }
   TestSupport::PrivateFolder folder;
   const std::string socket = folder.file( "smbus.sock" );
   StartedProgram server{ { ORBIS_SMBUSD, "--socket", socket, "--replay",
                            RECORDINGS "/kelt-through-linux.rec" } };
};

TEST_F( RecordedBoardTest, TheBoardShowsWhatItShowedThroughTheKernel ) {
   const Shown shown = showBoard( BOARDS "/kelt", socket );
   EXPECT_EQ( shown.exitCode, 0 );
   for ( const auto &[name, value] : std::map<std::string, double>{
            { "temp-front temperature", 24.5 },
            { "temp-rear temperature", 31 },
            { "temp-asic temperature", 58.5 },
            { "temp-board temperature", -3 },
            { "psu1 input_voltage", 230 },
            { "psu1 output_current", 21.5 },
            { "psu2 input_voltage", 228 },
            { "psu2 output_current", 17.25 },
            { "psu1-inlet temperature", 27.5 },
            { "fan1 speed", 11671 },
            { "fan5 speed", 15012 },
         } )
      EXPECT_THAT( shown.values, Contains( Pair( name, value ) ) );
   EXPECT_THAT( shown.texts, Contains( Pair( "psu1-slot", HasSubstr( "P2306A0017" ) ) ) );
   EXPECT_TRUE( shown.absent.contains( "qsfp3" ) );
   EXPECT_FALSE( shown.absent.contains( "qsfp1" ) );
   for ( const auto &[name, fault] : shown.faults )
      EXPECT_EQ( fault, name == "system" ? "unsupported: " : "absent: " ) << name;
}

TEST_F( RecordedBoardTest, AFaultFromTheKernelIsReportedAgain ) {
   StartedProgram client(
      { ORBIS_SMBUS, "--socket", socket, "read", "scd(4):1:2:0x55", "0", "--via", "0x70=1" } );
   EXPECT_EQ( client.wait(), 1 );
   EXPECT_THAT( client.errors(),
                HasSubstr( "request 2 of 3: read of 1 byte from 0x55 register 0x00 "
                           "on scd(4):1:2: no acknowledge of the address" ) );
}

} // namespace
