// Each scenario of the board with the events that it has to give: NAME.events beside
// NAME.scenario, a line for each; "> SUPPLY clear-faults" is what a person does at the end. The
// clock is turned by hand.
#include "WatchedBoard.h"
#include "orbis-smbus/Scenario.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;

std::vector<std::string> linesOf( const fs::path &path ) {
   std::ifstream file( path );
   std::vector<std::string> lines;
   for ( std::string line; std::getline( file, line ); )
      if ( !line.empty() && !line.starts_with( '#' ) )
         lines.push_back( line );
   return lines;
}

std::vector<std::string> scenarios() {
   std::vector<std::string> names;
   for ( const auto &entry : fs::directory_iterator( BOARDS "/kelt/scenarios" ) )
      if ( entry.path().extension() == ".scenario" )
         names.push_back( entry.path().stem() );
   std::sort( names.begin(), names.end() );
   return names;
}

class ScenarioEventsTest : public ::testing::TestWithParam<std::string> {};

TEST_P( ScenarioEventsTest, TheScenarioGivesExactlyItsEvents ) {
   const fs::path folder = BOARDS "/kelt/scenarios";
   WatchedBoard board;
   SmbusClient::Scenario( folder / ( GetParam() + ".scenario" ) )
      .play( [&board]( const SmbusControl::Request &request ) { return board.ask( request ); } );
   std::vector<std::string> wanted;
   for ( const std::string &line : linesOf( folder / ( GetParam() + ".events" ) ) ) {
      if ( !line.starts_with( "> " ) ) {
         wanted.push_back( line );
         continue;
      }
      board.clearFaults( line.substr( 2, line.find( ' ', 2 ) - 2 ) );
      board.round();
   }
   EXPECT_THAT( board.told(), ::testing::ElementsAreArray( wanted ) );
   EXPECT_TRUE( board.monitor().causes().empty() );
}

INSTANTIATE_TEST_SUITE_P( Kelt, ScenarioEventsTest, ::testing::ValuesIn( scenarios() ),
                          []( const auto &name ) {
                             std::string words = name.param;
                             std::replace( words.begin(), words.end(), '-', '_' );
                             return words;
                          } );

} // namespace
