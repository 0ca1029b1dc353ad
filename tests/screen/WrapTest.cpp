#include "screen/Wrap.h"

#include <gmock/gmock.h>

namespace Screen {
namespace {

using ::testing::ElementsAre;

std::vector<std::string> wrapped( const std::string &text, size_t indent, size_t columns ) {
   std::vector<std::string> lines;
   wrap( lines, text, indent, columns );
   return lines;
}

TEST( WrapTest, BreaksAtBlanksAndIndentsWhatFollows ) {
   EXPECT_THAT( wrapped( "psu1 input lost", 2, 10 ), ElementsAre( "psu1 input", "  lost" ) );
   EXPECT_THAT( wrapped( "psu1 input lost", 2, 15 ), ElementsAre( "psu1 input lost" ) );
}

TEST( WrapTest, CountsColumnsNotBytes ) {
   EXPECT_THAT( wrapped( "99 °C 95 °C", 0, 11 ), ElementsAre( "99 °C 95 °C" ) );
}

TEST( WrapTest, BreaksAWordThatIsWiderThanALine ) {
   EXPECT_THAT( wrapped( "a /run/orbis/smbus.sock", 1, 10 ),
                ElementsAre( "a /run/orb", " is/smbus.", " sock" ) );
}

TEST( WrapTest, LeavesALineAsItIsWithoutAWidth ) {
   EXPECT_THAT( wrapped( "psu1 input lost", 2, 0 ), ElementsAre( "psu1 input lost" ) );
   EXPECT_THAT( wrapped( "abc", 2, 3 ), ElementsAre( "abc" ) );
   EXPECT_THAT( wrapped( "abcd", 2, 3 ), ElementsAre( "abcd" ) ); // no room behind the indent
}

} // namespace
} // namespace Screen
