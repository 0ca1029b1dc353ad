#include "simulator/chips/Drift.h"

#include <gtest/gtest.h>

#include <cmath>

namespace SimulatorTest {

namespace {

using Simulator::Drift;
using namespace std::chrono_literals;

TEST( DriftTest, IsZeroByDefault ) {
   const Drift still;
   for ( const auto time : { 0s, 1s, 86400s } )
      EXPECT_EQ( still.at( time ), 0 );
}

TEST( DriftTest, StartsAtZero ) { EXPECT_EQ( Drift( 2, 30s, 5 ).at( 0s ), 0 ); }

TEST( DriftTest, RepeatsExactlyFromItsSeed ) {
   const Drift first( 2, 30s, 5 ), second( 2, 30s, 5 );
   for ( auto time = 0s; time < 1000s; time += 7s )
      ASSERT_EQ( first.at( time ), second.at( time ) );
   // Computed independently of this code: the first two turning points, and the middle between
   // them.
   EXPECT_DOUBLE_EQ( first.at( 30s ), 1.523158330927366 );
   EXPECT_DOUBLE_EQ( first.at( 60s ), 0.6160534912879991 );
   EXPECT_NEAR( first.at( 45s ), 1.069606, 0.000001 );
}

TEST( DriftTest, DiffersWithAnotherSeed ) {
   EXPECT_NE( Drift( 2, 30s, 5 ).at( 30s ), Drift( 2, 30s, 6 ).at( 30s ) );
}

TEST( DriftTest, StaysWithinItsAmplitudeOnBothSidesOfZero ) {
   const Drift drift( 2, 30s, 5 );
   double least = 0, most = 0;
   for ( auto time = 0s; time < 10000s; time += 1s ) {
      least = std::min( least, drift.at( time ) );
      most = std::max( most, drift.at( time ) );
   }
   EXPECT_GE( least, -2 );
   EXPECT_LT( least, -1 );
   EXPECT_LE( most, 2 );
   EXPECT_GT( most, 1 );
}

TEST( DriftTest, NeverJumps ) {
   const Drift drift( 2, 30s, 5 );
   // The steepest slope: 1.5 times the whole range in one period.
   for ( auto time = 0s; time < 1000s; time += 1s )
      ASSERT_LE( std::abs( drift.at( time + 1s ) - drift.at( time ) ), 1.5 * 4 / 30 );
}

} // namespace

} // namespace SimulatorTest
