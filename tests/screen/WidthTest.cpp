#include "screen/Width.h"

#include <gtest/gtest.h>

namespace Screen {
namespace {

TEST( WidthTest, CountsColumnsNotBytes ) {
   EXPECT_EQ( widthOf( "25 °C" ), 5u );
   EXPECT_EQ( widthOf( "▁▄█" ), 3u );
   EXPECT_EQ( widthOf( "電源" ), 4u );     // full width
   EXPECT_EQ( widthOf( "e\u0301" ), 1u );  // an accent above its letter
   EXPECT_EQ( widthOf( "\xff\xc3" ), 2u ); // no UTF-8
   EXPECT_EQ( widthOf( "" ), 0u );
}

TEST( WidthTest, ClipsBetweenCharacters ) {
   EXPECT_EQ( clip( "25 °C ok", 5 ), "25 °C" );
   EXPECT_EQ( clip( "25 °C", 80 ), "25 °C" );
   EXPECT_EQ( clip( "電源", 3 ), "電" );
}

TEST( WidthTest, MarksWhatIsShortened ) {
   EXPECT_EQ( shorten( "temp-front", 10 ), "temp-front" );
   EXPECT_EQ( shorten( "temp-front", 6 ), "temp-…" );
   EXPECT_EQ( shorten( "temp", 1 ), "…" );
   EXPECT_EQ( shorten( "temp", 0 ), "" );
}

TEST( WidthTest, FillsUpToTheWidth ) {
   EXPECT_EQ( fill( "°C", 4 ), "°C  " );
   EXPECT_EQ( fill( "電源", 3 ), "電…" );
   EXPECT_EQ( fill( "電電", 4 ), "電電" );
}

} // namespace
} // namespace Screen
