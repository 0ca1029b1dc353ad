#include "simulator/chips/modules/LaggingSwitch.h"

#include <gtest/gtest.h>

namespace SimulatorTest {

namespace {

using Simulator::LaggingSwitch;
using namespace std::chrono_literals;

TEST( LaggingSwitchTest, GoesOnAndOffInItsOwnTimes ) {
   LaggingSwitch lagging( 100ms, 300ms );
   EXPECT_FALSE( lagging.at( 1h ) );
   lagging.told( true, 1h );
   EXPECT_TRUE( lagging.told() );
   EXPECT_FALSE( lagging.at( 1h + 99ms ) );
   EXPECT_TRUE( lagging.at( 1h + 100ms ) );
   lagging.told( false, 2h );
   EXPECT_TRUE( lagging.at( 2h + 299ms ) );
   EXPECT_FALSE( lagging.at( 2h + 300ms ) );
}

TEST( LaggingSwitchTest, StaysWhenItIsToldTheContraryInTime ) {
   LaggingSwitch lagging( 100ms, 300ms );
   lagging.told( true, 1h );
   lagging.told( false, 1h + 99ms );
   EXPECT_FALSE( lagging.at( 1h + 100ms ) );
   EXPECT_FALSE( lagging.at( 2h ) );
}

TEST( LaggingSwitchTest, DoesNotStartAnewWhenItIsToldTheSameAgain ) {
   LaggingSwitch lagging( 100ms, 300ms );
   lagging.told( true, 1h );
   lagging.told( true, 1h + 90ms );
   EXPECT_TRUE( lagging.at( 1h + 100ms ) );
}

} // namespace

} // namespace SimulatorTest
