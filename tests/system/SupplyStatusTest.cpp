// What a supply says is wrong with it, through the plug-in's own SMBus object.
#include "BoardInOneProcess.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace {

using Host::State;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

class SupplyStatusTest : public ::testing::Test {
 protected:
   std::string status( const std::string &supply ) const {
      return board.text( supply + "-status", "status" );
   }
   void set( const std::string &chip, const std::string &quantity, double value ) {
      const auto all = board.chip( chip ).quantities();
      std::find_if( all.begin(), all.end(), [&]( const Simulator::Quantity &one ) {
         return one.name == quantity;
      } )->set( value );
   }
   BoardInOneProcess board{ { "psu1", "psu1-status", "psu2", "psu2-status" } };
};

TEST_F( SupplyStatusTest, AGoodSupplyIsOk ) {
   board.start();
   EXPECT_EQ( status( "psu1" ), "ok" );
   EXPECT_EQ( board.text( "psu1-status", "status_word" ), "0x0000" );
}

TEST_F( SupplyStatusTest, EachFaultIsToldInWordsAndOnlyOfItsSupply ) {
   board.start();
   const struct {
      const char *quantity;
      double value, good;
      const char *status;
      const char *over; // after the fault has gone
   } rows[] = {
      { "line", 0, 230, "input undervoltage, unit off for insufficient input voltage",
        "input undervoltage (over), unit off for insufficient input voltage (over)" },
      { "line", 88, 230, "input voltage is low", "input voltage is low" },
      { "failed", 1, 0, "output undervoltage", "output undervoltage (over)" },
      { "psu1.fan2 stalled", 1, 0, "fan 2 failed", "fan 2 failed" },
      { "load", 72, 21.5, "output current is high", "output current is high" },
   };
   for ( const auto &row : rows ) {
      set( "psu1", row.quantity, row.value );
      board.round();
      EXPECT_EQ( status( "psu1" ), row.status );
      EXPECT_EQ( status( "psu2" ), "ok" );
      set( "psu1", row.quantity, row.good );
      board.round();
      EXPECT_EQ( status( "psu1" ), row.over );
      EXPECT_TRUE( board.act( "psu1-status", { "clear_faults", {} } ) );
      board.round();
      EXPECT_EQ( status( "psu1" ), "ok" ) << row.status;
   }
}

TEST_F( SupplyStatusTest, AGoodSupplyTakesOneTransferMoreThanBefore ) {
   board.start();
   board.forgetWires();
   board.round();
   EXPECT_EQ( board.onTheWires().begin()->second.transfers, 2 * ( 8 + 1 ) );
}

TEST_F( SupplyStatusTest, TheLimitsOfASupplyAreKnownAndThoseOfItsSuccessorToo ) {
   board.start();
   const Health::Pmbus::Limit current{ "output_current", true, Health::Level::Warning, 70, "A" };
   EXPECT_THAT( board.limits( "psu1-status" ), Contains( current ) );
   EXPECT_EQ( board.limits( "psu1-status" ).size(), 14u );
   EXPECT_EQ( board.limits( "psu1" ).size(), 0u );
   board.pull( "psu1" );
   board.round();
   EXPECT_EQ( board.object( "psu1-status" ).state, State::Unreadable );
   EXPECT_THAT( board.object( "psu1-status" ).fault.words, HasSubstr( "no acknowledge" ) );
   board.insert( "spare1" );
   board.round();
   EXPECT_EQ( status( "psu1" ), "ok" );
   EXPECT_THAT( board.limits( "psu1-status" ), Not( Contains( current ) ) );
}

// One process can only make the driver objects once.
TEST( SupplyOrderTest, ASupplyAndItsStatusMayComeInEitherOrder ) {
   for ( const bool statusFirst : { false, true } ) {
      const auto both = [statusFirst] {
         BoardInOneProcess board( { "psu1", "psu1-status" }, statusFirst );
         board.start();
         return board.text( "psu1-status", "status" ) == "ok" &&
                board.object( "psu1" ).state == State::Ok;
      };
      EXPECT_EXIT( std::_Exit( both() ? 0 : 1 ), ::testing::ExitedWithCode( 0 ), "" )
         << statusFirst;
   }
}

} // namespace
