// orbis-smbus top and trace --last.
#include "PrivateFolder.h"
#include "StartedProgram.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace SmbusdTest {

namespace {

using namespace TestSupport;
using ::testing::AllOf;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;
using Words = std::vector<std::string>;

class AccountsTest : public ::testing::Test {
 protected:
   AccountsTest() { EXPECT_TRUE( server.waitForError( "serving" ) ) << server.errors(); }
   std::string run( Words arguments ) {
      arguments.insert( arguments.begin(), { ORBIS_SMBUS, "--socket", path } );
      StartedProgram program( arguments );
      const int code = program.wait();
      errors = program.errors();
      return std::to_string( code ) + "\n" + program.output();
   }
   void readBehindAMux() {
      run( { "read", "scd(4):1:2:0x48", "0", "--size", "word", "--via", "0x70=1" } );
   }

   PrivateFolder folder;
   const std::string path = folder.file( "smbus.sock" );
   StartedProgram server{ { ORBIS_SMBUSD, "--socket", path, "--speed", "0", "--simulate",
                            KELT_BOARD "/topology.json", "--simulation",
                            KELT_BOARD "/simulation.json" } };
   std::string errors; // of the last run
};

TEST_F( AccountsTest, TopTellsWhatPassedSinceTheStart ) {
   readBehindAMux();
   const std::string table = run( { "top", "--count", "1" } );
   EXPECT_THAT( table, HasSubstr( "since the server's start" ) );
   EXPECT_THAT( table, ContainsRegex( "\nscd\\(4\\):1:2 .* 3 +0 .* ms .* ms .* ms" ) );
   EXPECT_THAT( table, ContainsRegex( "\n  root .* 1 +0\n" ) );   // the selection
   EXPECT_THAT( table, ContainsRegex( "\n  0x70=1 .* 2 +0\n" ) ); // the reading and the release
   EXPECT_THAT( table, ContainsRegex( "\norbis-smbus \\([0-9]+\\) .* 3 +0\n" ) );
   EXPECT_THAT( run( { "top", "--count", "1", "--chips" } ),
                ContainsRegex( "\n    0x48 .* 1 +0\n" ) );
}

TEST_F( AccountsTest, TopTellsErrorsByTheirReason ) {
   run( { "read", "i2c:0:0x4f", "0" } );
   EXPECT_THAT( run( { "top", "--count", "1" } ), ContainsRegex( "\ni2c:0 .* 1 +1 .*  1 nack\n" ) );
}

TEST_F( AccountsTest, TopTellsHowOftenAChipFailedInARow ) {
   for ( int i = 0; i < 2; ++i )
      run( { "read", "i2c:0:0x4f", "0" } );
   EXPECT_THAT( run( { "top", "--count", "1", "--chips" } ),
                ContainsRegex( "\n    0x4f .* 2 +2  2 in a row, the last: nack\n" ) );
   EXPECT_THAT( run( { "--json", "top", "--count", "1" } ),
                HasSubstr( "\"failuresInARow\":2,\"lastFailure\":\"nack\"}" ) );
}

TEST_F( AccountsTest, TopTellsBehindWhatALineIsHeld ) {
   run( { "sim", "stuck", "temp-front" } );
   readBehindAMux();
   EXPECT_THAT( run( { "top", "--count", "1" } ),
                ContainsRegex( "\nscd\\(4\\):1:2 .* 3 held-low, held since one behind 0x70=1\n"
                               "  !! the bus, which can't be released from the segment 0x70=1, is "
                               "quarantined for . s \\(the data line is held low by "
                               "temp-front\\), next try in 1 s\n" ) );
   EXPECT_THAT(
      run( { "--json", "top", "--count", "1" } ),
      HasSubstr( "\"held\":\"0x70=1\",\"quarantined\":[{\"path\":\"0x70=1\",\"wholeBus\":true,"
                 "\"reason\":\"the data line is held low by temp-front\"," ) );
}

TEST_F( AccountsTest, TopIsAnObjectForScripts ) {
   readBehindAMux();
   const std::string json = run( { "--json", "top", "--count", "1" } );
   // S addr byte P twice, S addr cmd Sr addr data data P
   EXPECT_THAT( json, HasSubstr( "{\"bus\":\"scd(4):1:2\",\"clock\":100000,\"transfers\":3,"
                                 "\"failures\":0,\"bytes\":9,\"wireSeconds\":0.00088," ) );
   EXPECT_THAT( json, HasSubstr( "{\"path\":\"0x70=1\",\"transfers\":2," ) );
}

TEST_F( AccountsTest, LaterTablesAreOfTheTimeBetween ) {
   readBehindAMux();
   const std::string tables = run( { "--json", "top", "--count", "2", "--interval", "0.1" } );
   const std::string second = tables.substr( tables.find( '\n', 2 ) + 1 );
   EXPECT_THAT( second, HasSubstr( "\"bus\":\"scd(4):1:2\",\"clock\":100000,\"transfers\":0," ) );
}

TEST_F( AccountsTest, TraceTellsTheLastTransfersOfABus ) {
   readBehindAMux();
   run( { "read", "i2c:0:0x48", "0" } );
   const std::string last = run( { "trace", "--last", "scd(4):1:2" } );
   EXPECT_THAT( last, AllOf( HasSubstr( " -                send byte 0x01 to 0x70\n" ),
                             HasSubstr( " 0x70=1           read of 2 bytes from 0x48 register 0x00 "
                                        "-> 18 80\n" ),
                             Not( HasSubstr( "i2c:0" ) ) ) );
   EXPECT_THAT( run( { "trace", "--last" } ),
                AllOf( HasSubstr( "scd(4)" ), HasSubstr( "i2c:0" ) ) );
   EXPECT_THAT( run( { "--json", "trace", "--last", "i2c:0" } ), HasSubstr( "\"took\":" ) );
}

TEST_F( AccountsTest, TraceTellsWhatLedToAFailure ) {
   run( { "read", "i2c:0:0x48", "0" } );
   EXPECT_EQ( run( { "trace", "--last", "--failures" } ), "0\n" );
   run( { "read", "i2c:0:0x4f", "0" } );
   run( { "read", "i2c:0:0x48", "1" } );
   EXPECT_THAT( run( { "trace", "--last", "--failures" } ),
                AllOf( HasSubstr( "from 0x48 register 0x00" ),
                       HasSubstr( "from 0x4f register 0x00: no acknowledge of the address" ),
                       Not( HasSubstr( "from 0x48 register 0x01" ) ) ) );
}

TEST_F( AccountsTest, ABusThatIsNotServedIsAnswered ) {
   EXPECT_EQ( run( { "trace", "--last", "i2c:9" } ), "1\n" );
   EXPECT_THAT( errors, HasSubstr( "i2c:9 is not served; these are: i2c:0, scd(4):1:2, " ) );
   EXPECT_EQ( run( { "trace", "--last", "i2c-9" } ), "2\n" );
   EXPECT_THAT( errors, HasSubstr( "not a bus: i2c-9; write it as i2c:0 or scd(4):1:2" ) );
}

TEST_F( AccountsTest, APastTransferIsDrawnAtItsBussClock ) {
   run( { "read", "i2c:0:0x48" } ); // S 10010001 A data N P: 20 bits of 10 us
   const std::string dump = run( { "trace", "--last", "i2c:0", "--vcd" } );
   EXPECT_THAT( dump, HasSubstr( "$scope module i2c:0 $end\n$var wire 1 ! SCL $end\n" ) );
   EXPECT_THAT( dump, HasSubstr( "\n#15000\n0\"\n" ) ); // the start
   EXPECT_THAT( dump, HasSubstr( "\n#220000\n" ) );     // a period behind the stop
}

} // namespace

} // namespace SmbusdTest
