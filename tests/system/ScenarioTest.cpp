// All scenarios of the board succeed.
#include "RunningBoard.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

TEST( ScenarioTest, EveryScenarioOfTheKeltBoardSucceeds ) {
   int played = 0;
   for ( const auto &entry : std::filesystem::directory_iterator( BOARDS "/kelt/scenarios" ) ) {
      if ( entry.path().extension() != ".scenario" )
         continue;
      RunningBoard board( "kelt", { "--speed", "0" } );
      const Ran ran = board.play( entry.path() );
      EXPECT_EQ( ran.exitCode, 0 ) << ran.output << ran.errors;
      ++played;
   }
   EXPECT_GT( played, 0 );
}

} // namespace
