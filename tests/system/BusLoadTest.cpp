// What a check of the board's files says of its busses is what the server counts on them.
#include "BoardInOneProcess.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

constexpr unsigned polledDevices = 2; // the CPLDs with cages

TEST( BusLoadTest, ARefreshOfTheKeltBoardTakesAsManyBitsOnEachRootBusAsACheckSays ) {
   BoardInOneProcess board;
   board.start();
   board.waitForTimers( polledDevices );
   auto seen = board.onTheWires();
   for ( BoardFiles::BusLoad load : board.board().busses ) {
      load.modules = {}; // this board is read without them
      const double everySecond = 1;
      const BoardFiles::WireCost told = load.refresh( everySecond );
      EXPECT_EQ( told.transfers, seen[load.bus].transfers ) << toString( load.bus );
      EXPECT_EQ( told.bits, seen[load.bus].bits ) << toString( load.bus );
      seen.erase( load.bus );
   }
   EXPECT_TRUE( seen.empty() );
}

// Of a cage with its module, in the ten seconds from one reading to the next.
BoardFiles::WireCost readingOf( const std::string &cage, const Bus::RootBusId &bus ) {
   BoardInOneProcess board( { cage, cage + "-module" } );
   board.start();
   board.forgetWires();
   for ( int second = 0; second < 10; ++second )
      board.round();
   const auto seen = board.onTheWires();
   return seen.at( bus );
}

TEST( BusLoadTest, ToldOfModulesIsWhatTheirReadingPutsOnTheWires ) {
   const BoardInOneProcess board( { "qsfp1" } );
   const auto loadOf = [&board]( const std::string &bus ) {
      return *std::find_if( board.board().busses.begin(), board.board().busses.end(),
                            [&]( const auto &load ) { return toString( load.bus ) == bus; } );
   };
   const BoardFiles::BusLoad qsfps = loadOf( "scd(4):2:0" ), mixed = loadOf( "scd(4):2:1" );
   const auto qsfp = readingOf( "qsfp1", qsfps.bus ), sfp = readingOf( "sfp1", mixed.bus );
   EXPECT_EQ( qsfps.modules.bits, 32 * qsfp.bits );
   EXPECT_EQ( qsfps.modules.transfers, 32 * qsfp.transfers );
   EXPECT_EQ( mixed.modules.bits, 48 * sfp.bits + 6 * qsfp.bits );
}

} // namespace
