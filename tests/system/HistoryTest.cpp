// What serve remembers of the numbers of the whole board.
#include "WatchedBoard.h"
#include "history/Store.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;

TEST( HistoryTest, ADayOfTheWholeBoardTakesLessThan40Megabytes ) {
   WatchedBoard watched;
   Health::BoardReport report = watched.board().report();
   History::Store history;
   const std::chrono::steady_clock::time_point begin( 1000h );
   size_t numbers = 0;
   for ( auto at = begin; at < begin + 24h; at += at < begin + 23h ? 60s : 1s ) {
      for ( Health::ObjectReport &object : report )
         for ( Health::ValueReport &value : object.values )
            // A module is read every ten seconds.
            value.age =
               object.type == "module" ? static_cast<double>( ( at - begin ) % 10s / 1s ) : 0;
      history.add( report, { at, {} } );
   }
   for ( size_t i = 0; i < report.size(); ++i ) {
      for ( const History::Series &series : history.of( i ) ) {
         ++numbers;
         EXPECT_GE( series.minutes( {} ).size(), 1440u );
         EXPECT_GE( series.readings( {} ).size(), report[i].type == "module" ? 360u : 3600u );
      }
   }
   RecordProperty( "numbers", static_cast<int>( numbers ) );
   RecordProperty( "bytes", static_cast<int>( history.bytes() ) );
   EXPECT_LE( history.bytes(), History::Limits().bytes );
   EXPECT_GT( numbers, 900u );
}

} // namespace
