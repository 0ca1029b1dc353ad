#include "host/terminal/CageGrid.h"
#include "screen/Width.h"

#include <gmock/gmock.h>

namespace Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

ValueReport line( const char *name, int64_t value, State state = State::Ok ) {
   return { { .name = name, .state = state, .value = value }, 0 };
}

ObjectReport sfp( const std::string &name, const Reading &presence ) {
   return { .name = name,
            .type = "xcvr",
            .values = { { presence, 0 },
                        line( "tx_fault", 1 ),
                        line( "rx_los", 0 ),
                        line( "tx_disable", 1 ) } };
}

const Reading present{ .name = "presence", .value = true };
const Reading absent{ .name = "presence", .state = State::Absent };

TEST( CageGridTest, ShowsPresenceAndOfAModuleTheLinesThatAreOn ) {
   const ObjectReport qsfp{ .name = "qsfp1",
                            .type = "xcvr",
                            .values = { { present, 0 },
                                        line( "mod_sel", 1 ),
                                        line( "lp_mode", 1 ),
                                        line( "reset", 0 ),
                                        line( "interrupt", 0, State::Unsupported ) } };
   EXPECT_THAT(
      gridOf( { sfp( "sfp1", present ), sfp( "sfp2", absent ), qsfp } ),
      ElementsAre( StartsWith( "CAGES  # present" ), "sfp1 #F-D  sfp2 .     qsfp1 #P-" ) );
}

TEST( CageGridTest, MarksWhatIsStaleOrUnreadableAndSaysWhyBelow ) {
   const Reading stale{
      .name = "presence", .state = State::Stale, .value = false, .fault = { {}, "nack" }
   };
   const ObjectReport dead{
      .name = "b", .type = "xcvr", .state = State::Unreadable, .fault = { {}, "an assertion" }
   };
   EXPECT_THAT(
      gridOf( { sfp( "a1", stale ), sfp( "a2", stale ), dead } ),
      ElementsAre( testing::_, "a1 .~  a2 .~  b ?", "b: an assertion", "a1 and 1 more: nack" ) );
}

TEST( CageGridTest, FillsALineOf80CharactersBeforeTheNext ) {
   BoardReport board;
   for ( int i = 10; i < 19; ++i )
      board.push_back( sfp( "sfp" + std::to_string( i ), present ) );
   const auto grid = gridOf( board );
   ASSERT_EQ( grid.size(), 3u );
   EXPECT_EQ( grid[1], "sfp10 #F-D  sfp11 #F-D  sfp12 #F-D  sfp13 #F-D  sfp14 #F-D  sfp15 #F-D" );
}

TEST( CageGridTest, FillsTheTerminalAndWrapsWhatIsLonger ) {
   const ObjectReport dead{ .name = "b",
                            .type = "xcvr",
                            .state = State::Unreadable,
                            .fault = { {}, "request 1: no acknowledge from 0x50" } };
   const auto grid = gridOf( { sfp( "sfp1", present ), sfp( "sfp2", absent ), dead }, 30 );
   for ( const std::string &text : grid )
      EXPECT_LE( Screen::widthOf( text ), 30u ) << text;
   EXPECT_THAT( grid,
                ::testing::IsSupersetOf( { "sfp1 #F-D  sfp2 .", "b ?",
                                           "b: request 1: no acknowledge", "  from 0x50" } ) );
}

TEST( CageGridTest, IsNothingWithoutCages ) {
   EXPECT_THAT( gridOf( { { .name = "t", .type = "temp_sensor" } } ), IsEmpty() );
}

} // namespace
} // namespace Host
