// What a check of the board's files says of its busses is what the server counts on them.
#include "BoardInOneProcess.h"

#include <gtest/gtest.h>

namespace {

constexpr unsigned polledDevices = 2; // the CPLDs with cages

TEST( BusLoadTest, ARefreshOfTheKeltBoardTakesAsManyBitsOnEachRootBusAsACheckSays ) {
   BoardInOneProcess board;
   board.start();
   board.waitForTimers( polledDevices );
   auto seen = board.onTheWires();
   for ( const BoardFiles::BusLoad &load : board.board().busses ) {
      const double everySecond = 1;
      const BoardFiles::WireCost told = load.refresh( everySecond );
      EXPECT_EQ( told.transfers, seen[load.bus].transfers ) << toString( load.bus );
      EXPECT_EQ( told.bits, seen[load.bus].bits ) << toString( load.bus );
      seen.erase( load.bus );
   }
   EXPECT_TRUE( seen.empty() );
}

} // namespace
