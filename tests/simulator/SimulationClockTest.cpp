#include "simulator/board/SimulationClock.h"
#include "ManualClock.h"

#include <gtest/gtest.h>

namespace SimulatorTest {

namespace {

using namespace TestSupport;
using namespace Bus;
using namespace Simulator;
using namespace std::chrono_literals;

TEST( SimulationClockTest, StartsAtZeroAndRunsFasterByItsSpeed ) {
   ManualClock real;
   real.advance( 5s );
   SimulationClock clock( real, 60 );
   EXPECT_EQ( clock.now(), 0s );
   real.advance( 2s );
   EXPECT_EQ( clock.now(), 2min );
}

TEST( SimulationClockTest, StopsAtSpeedZeroUntilItIsStepped ) {
   ManualClock real;
   SimulationClock clock( real, 0 );
   real.advance( 1h );
   EXPECT_EQ( clock.now(), 0s );
   clock.step( 90s );
   EXPECT_EQ( clock.now(), 90s );
}

TEST( SimulationClockTest, ContinuesWhenItsSpeedChanges ) {
   ManualClock real;
   SimulationClock clock( real, 1 );
   real.advance( 10s );
   clock.speedIs( 3600 );
   real.advance( 1s );
   clock.speedIs( 0 );
   real.advance( 1s );
   EXPECT_EQ( clock.now(), 3610s );
   clock.step( 1s );
   clock.speedIs( 1 );
   real.advance( 1s );
   EXPECT_EQ( clock.now(), 3612s );
}

TEST( SimulationClockTest, EndsAfter250YearsWithoutGoingBack ) {
   ManualClock real;
   SimulationClock clock( real, 0 );
   const Clock::Time year = 365 * 24h;
   for ( int i = 0; i < 250; ++i )
      EXPECT_TRUE( clock.step( year ) ) << i;
   EXPECT_FALSE( clock.step( 1ns ) );
   EXPECT_EQ( clock.now(), 250 * year );
   clock.speedIs( 1e6 );
   real.advance( 10 * year );
   EXPECT_EQ( clock.now(), 250 * year );
}

TEST( SimulationClockTest, EndsAtAnySpeed ) {
   ManualClock real;
   SimulationClock clock( real, 1e6 );
   real.advance( 24h );
   EXPECT_EQ( clock.now(), SimulationClock::end );
   clock.speedIs( 0 );
   EXPECT_EQ( clock.now(), SimulationClock::end );
}

} // namespace

} // namespace SimulatorTest
