#include "boardfiles/BusLoad.h"

#include "boardfiles/Board.h"
#include "support/ChangedBoard.h"

#include <gmock/gmock.h>

namespace BoardFilesTest {
namespace {

using namespace BoardFiles;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// The Kelt board. On the wires are 9 bits for a byte, and one for a start and for a stop: 20 bits
// set a mux, 39 read a byte of a register, 48 a word.
class BusLoadTest : public ::testing::Test {
 protected:
   BusLoad load( const std::string &bus ) const {
      Findings findings;
      const auto board =
         loadBoard( board_.folder().path(), BOARDS "/libOrbisDriversKelt.drivers.json", findings );
      EXPECT_THAT( textsWithPointers( findings ), IsEmpty() );
      for ( const BusLoad &each : board.value().busses )
         if ( toString( each.bus ) == bus )
            return each;
      ADD_FAILURE() << "no bus " << bus;
      return {};
   }
   double bits( const std::string &bus ) const { return load( bus ).refresh( 1 ).bits; }

   const ChangedBoard board_{ BOARDS "/kelt", BOARDS "/libOrbisDriversKelt.drivers.json" };
};

TEST_F( BusLoadTest, AThermometerIsAWordOfARegister ) { EXPECT_EQ( bits( "i2c:0" ), 48 ); }

TEST_F( BusLoadTest, EachMuxOnTheWayIsSetAndReleased ) {
   EXPECT_EQ( load( "scd(4):1:2" ).refresh( 1 ).transfers, 3 + 4 * 2 );
   EXPECT_EQ( bits( "scd(4):1:2" ), 3 * 48 + 4 * 2 * 20 ); // one thermometer is behind two
}

TEST_F( BusLoadTest, AFanWithTwoRotorsIsTheReadsOfBoth ) {
   constexpr double modules = 5 * 2 * 2 * 39, rotors = modules;  // the rotors are rows of their own
   EXPECT_EQ( bits( "scd(4):1:5" ), modules + rotors + 2 * 39 ); // and the slots' two banks of pins
}

TEST_F( BusLoadTest, ASupplysSlotIsReadAsItsModuleIsIdentified ) {
   constexpr double supply = 7 * 48 + 39, fansAndSensors = 4 * 48, status = 48;
   constexpr double pmbus = 2 * 39 + 2 * 129, ipmi = 6 * 39 + 2 * 120;
   EXPECT_EQ( bits( "scd(4):1:4" ), 2 * ( supply + fansAndSensors + status ) + pmbus + ipmi );
}

TEST_F( BusLoadTest, ARegisterBeyond255TakesTwoBytes ) {
   EXPECT_EQ( bits( "celestica:1:1" ), ( 16 + 36 + 4 ) * 48 ); // polls of two CPLDs, and four pins
}

TEST_F( BusLoadTest, ARegisterTakesTheBytesThatItsAddressSays ) {
   board_.change( "objects.json", "/5/device/address/addrSize", "2" );
   EXPECT_EQ( bits( "i2c:0" ), 48 + 9 );
}

// One mux is set and released around each transaction; an SFP has one of 22 bytes, a QSFP one of 56
// and one of 8, each behind an address, a register and a second address.
TEST_F( BusLoadTest, TheModulesOfAllCagesAreReadEveryTenSeconds ) {
   const auto read = []( int bytes ) { return 3 + 9 * ( 3 + bytes ); };
   constexpr int mux = 2 * 20;
   const double qsfp = 2 * mux + read( 56 ) + read( 8 ), sfp = mux + read( 22 );
   EXPECT_DOUBLE_EQ( bits( "scd(4):2:0" ), 32 * qsfp / 10 );
   EXPECT_DOUBLE_EQ( load( "scd(4):2:1" ).refresh( 10 ).bits, 48 * sfp + 6 * qsfp );
   EXPECT_DOUBLE_EQ( load( "scd(4):2:0" ).refresh( 60 ).bits, 32 * qsfp ); // with a longer period
   EXPECT_LT( load( "scd(4):2:0" ).share( 1 ), 0.05 );
}

TEST_F( BusLoadTest, WhatATimerPollsIsMoreOftenInALongerPeriod ) {
   const BusLoad cplds = load( "celestica:1:1" );
   EXPECT_EQ( cplds.refresh( 10 ).transfers, 10 * ( 16 + 36 ) + 4 );
   EXPECT_EQ( cplds.refresh( 10 ).bits, ( 10 * ( 16 + 36 ) + 4 ) * 48 );
}

TEST_F( BusLoadTest, ABusIsAsFastAsItsClock ) {
   const double usual = load( "scd(4):1:2" ).seconds( 1 );
   board_.change( "simulation.json", "/busses", R"([ { "bus": "scd(4):1:2", "clock": 400000 } ])" );
   EXPECT_DOUBLE_EQ( load( "scd(4):1:2" ).seconds( 1 ), usual / 4 );
}

TEST_F( BusLoadTest, ADeviceThatDoesNotPollPutsNothingOnTheBusByItself ) {
   Findings findings;
   const auto wiring = readTopology( board_.folder().path() / "topology.json", findings );
   auto things = readObjects( board_.folder().path() / "objects.json", findings )->objects;
   const auto table = readDriverTable( BOARDS "/libOrbisDriversKelt.drivers.json", findings );
   std::erase_if( things, []( const BoardObject &object ) { return object.kind == Kind::Xcvr; } );
   for ( const BusLoad &each : busLoads( *wiring, things, table.value(), {} ) )
      EXPECT_EQ( each.polls.transfers, 0 ) << toString( each.bus );
}

TEST_F( BusLoadTest, PortsOfThePcHaveNoWires ) {
   board_.change( "topology.json", "/2/type", "\"IOPort\"" );
   EXPECT_FALSE( load( "ioport:0" ).hasWires );
   EXPECT_EQ( load( "ioport:0" ).seconds( 1 ), 0 );
}

TEST( BusLoadWarningTest, ComesAboveFourFifthsOfTheTime ) {
   BusLoad load{ .bus = Bus::rootBusId( Bus::Master::I2c, 0, 0, 3 ),
                 .place = { .file = "topology.json" },
                 .reads = { 1000, 80'000 } };
   Findings findings;
   warnOfLoads( { load }, 1, findings );
   EXPECT_THAT( textsWithPointers( findings ), IsEmpty() );
   load.reads.bits = 89'000;
   warnOfLoads( { load }, 1, findings );
   EXPECT_THAT( textsWithPointers( findings ),
                ElementsAre( "topology.json: warning: i2c:3 is busy for 89 % of the time when all "
                             "objects are read every 1 s: read them less often (--period), or give "
                             "their chips another bus" ) );
   findings.clear();
   warnOfLoads( { load }, 2, findings );
   EXPECT_THAT( textsWithPointers( findings ), IsEmpty() );
}

} // namespace
} // namespace BoardFilesTest
