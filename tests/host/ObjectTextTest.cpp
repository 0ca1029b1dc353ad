#include "host/terminal/ObjectText.h"

#include <gmock/gmock.h>

namespace Host {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

class ObjectTextTest : public ::testing::Test {
 protected:
   ObjectTextTest() {
      psu_.values = { { .reading = { .name = "power", .unit = "W", .value = 5.0 } } };
      psu_.health.emplace();
      psu_.health->values.push_back( { .last = { { 1.0, {} }, { 2.0, {} } } } );
   }
   std::vector<std::string> lines( const NumbersByValue *history ) const {
      TextSections text( 80 );
      addValues( text, psu_, history );
      return text.lines();
   }

   ObjectReport psu_{ .name = "psu", .type = "psu" };
};

TEST_F( ObjectTextTest, DrawsTheLastTenMinutes ) {
   const NumbersByValue history{ { "power", { 0, 7, 0, 7 } } };
   EXPECT_THAT( lines( &history ), Contains( HasSubstr( "▁█▁█ 10 min" ) ) );
}

TEST_F( ObjectTextTest, DrawsTheLastReadingsWhereNobodyHasAHistory ) {
   const NumbersByValue none;
   EXPECT_THAT( lines( &none ), Contains( HasSubstr( "▁█" ) ) );
   EXPECT_THAT( lines( &none ), Not( Contains( HasSubstr( "10 min" ) ) ) );
   EXPECT_THAT( lines( nullptr ), Not( Contains( HasSubstr( "█" ) ) ) );
}

} // namespace
} // namespace Host
