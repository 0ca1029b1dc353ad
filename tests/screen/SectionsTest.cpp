#include "screen/Sections.h"
#include "screen/Ascii.h"
#include "screen/Sparkline.h"

#include <gtest/gtest.h>

namespace Screen {
namespace {

Item item( const std::string &id, const std::vector<std::string> &lines ) {
   return { id, linesOf( lines ) };
}

const std::vector<Section> sections{
   { .title = "FANS",
     .summary = { { "2" } },
     .items = { item( "fan1", { "fan1 ok" } ),
                item( "fan2", { "fan2 bad", "  no", "  answer" } ) } },
   { .title = "CAGES",
     .summary = { { "3" } },
     .legend = { { { "# there" } } },
     .cells = { item( "c1", { "c1 #" } ), item( "c2", { "c2 #" } ), item( "c3", { "c3 long" } ) },
     .notes = { item( "", { "c2: dark" } ) } }
};

std::string page( const std::set<std::string> &folded, const std::string &filter ) {
   return toText( pageOf( sections, folded, filter, 20 ).lines );
}

TEST( SectionsTest, StandBelowEachOtherWithSeveralCellsOnALine ) {
   EXPECT_EQ( page( {}, "" ), "▾ FANS  2\nfan1 ok\nfan2 bad\n  no\n  answer\n"
                              "▾ CAGES  3\n# there\nc1 #     c2 #\nc3 long\nc2: dark\n" );
   const Page whole = pageOf( sections, {}, "", 20 );
   EXPECT_EQ( whole.find( "fan2" )->lines, 3u );
   EXPECT_EQ( whole.find( "c2" )->column, 9u );
   EXPECT_EQ( whole.find( "c3" )->line, 8u );
   EXPECT_TRUE( whole.find( titleId( "CAGES" ) )->isTitle );
   EXPECT_EQ( whole.find( "c4" ), nullptr );
}

TEST( SectionsTest, FoldedTheyAreTheirTitle ) {
   EXPECT_EQ( page( { "FANS", "CAGES" }, "" ), "▸ FANS  2\n▸ CAGES  3\n" );
}

TEST( SectionsTest, AFilterLeavesWhatHasItsTextAlsoAcrossLinesAndInFoldedOnes ) {
   EXPECT_EQ( page( { "FANS" }, "NO ANSW" ), "▾ FANS  2\nfan2 bad\n  no\n  answer\n" );
   EXPECT_EQ( page( {}, "c2" ), "▾ CAGES  3\n# there\nc2 #\nc2: dark\n" );
   EXPECT_EQ( page( {}, "nowhere" ), "" );
}

TEST( SparklineTest, TheHigherTheLarger ) {
   EXPECT_EQ( sparkline( { 0, 1, 2, 3, 4, 5, 6, 7 } ), "▁▂▃▄▅▆▇█" );
   EXPECT_EQ( sparkline( { -2.5, -5 } ), "█▁" );
   EXPECT_EQ( sparkline( { 24.5, 24.5 } ), "▄▄" );
   EXPECT_EQ( sparkline( {} ), "" );
   EXPECT_EQ( sparkline( { 0, 0, 0, 14, 7, 7 }, 3 ), "▁██" );
   EXPECT_EQ( sparkline( { 0, 0, 1, 1, 1 }, 2 ), "▁█" );
}

TEST( AsciiTest, IsAsWideAndHasALetterForEachCharacter ) {
   EXPECT_EQ( toAscii( "▾ 24.5 °C …" ), "- 24.5 oC >" );
   EXPECT_EQ( toAscii( "▁▄█ 電" ), "_.^ ??" );
}

} // namespace
} // namespace Screen
