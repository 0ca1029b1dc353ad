// One acknowledge in fifty gets lost, and `orbis-host show` still shows every object.
#include "RunningBoard.h"

#include <gmock/gmock.h>

namespace {

constexpr int runs = 10;

class LostAcknowledgeTest : public ::testing::Test {
 protected:
   void loseOneIn50( const std::vector<std::string> &chips ) {
      for ( const std::string &chip : chips )
         ASSERT_THAT( board.smbus( { "sim", "nack", chip, "1/50" } ),
                      ::testing::AnyOf( "", ::testing::StartsWith( "done: " ) ) );
   }

   RunningBoard board{ "kelt" };
};

TEST_F( LostAcknowledgeTest, ShowLosesNoThermometerWhileItIsAdded ) {
   loseOneIn50( { "temp-front", "temp-rear", "temp-asic", "temp-board", "temp-cpu" } );
   for ( int i = 0; i < runs; ++i )
      for ( const auto &[object, fault] : board.show().faults )
         EXPECT_THAT( fault, ::testing::Not( ::testing::HasSubstr( "Assertion" ) ) ) << object;
}

TEST_F( LostAcknowledgeTest, ShowTellsNoSupplyAbsent ) {
   loseOneIn50( { "psu1", "psu2", "psu2-fru" } );
   for ( int i = 0; i < runs; ++i ) {
      const Shown shown = board.show();
      EXPECT_FALSE( shown.absent.contains( "psu1-slot" ) );
      EXPECT_FALSE( shown.absent.contains( "psu2-slot" ) );
   }
}

} // namespace
