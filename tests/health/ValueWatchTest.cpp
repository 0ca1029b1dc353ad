// The state of one value: each edge, the hysteresis, the hold time, and what isn't known.
#include "health/ValueWatch.h"

#include <gtest/gtest.h>

#include <random>

namespace ValueWatchTests {

namespace {

using namespace Health;
using BoardFiles::ValueLimits;

Instant at( double second ) {
   const auto time = std::chrono::duration<double>( second );
   return { std::chrono::steady_clock::time_point(
               std::chrono::duration_cast<std::chrono::steady_clock::duration>( time ) ),
            WallTime( std::chrono::duration_cast<std::chrono::milliseconds>( time ) ) };
}

const ValueLimits four{
   .lowCritical = 10, .lowWarning = 20, .highWarning = 80, .highCritical = 90
};

struct Edge {
   const char *name;
   double number;
   Level level;
};

class EdgeTest : public ::testing::TestWithParam<Edge> {};

TEST_P( EdgeTest, AValueAtItsLimitIsStillGood ) {
   ValueWatch watch( four );
   watch.known( GetParam().number, at( 1 ) );
   EXPECT_EQ( watch.level(), GetParam().level );
}

INSTANTIATE_TEST_SUITE_P( Each, EdgeTest,
                          ::testing::Values( Edge{ "FarBelow", -40, Level::Critical },
                                             Edge{ "BelowTheLowCritical", 9.99, Level::Critical },
                                             Edge{ "AtTheLowCritical", 10, Level::Warning },
                                             Edge{ "BelowTheLowWarning", 19.99, Level::Warning },
                                             Edge{ "AtTheLowWarning", 20, Level::Ok },
                                             Edge{ "Between", 50, Level::Ok },
                                             Edge{ "AtTheHighWarning", 80, Level::Ok },
                                             Edge{ "AboveTheHighWarning", 80.01, Level::Warning },
                                             Edge{ "AtTheHighCritical", 90, Level::Warning },
                                             Edge{ "AboveTheHighCritical", 90.01, Level::Critical },
                                             Edge{ "FarAbove", 1000, Level::Critical } ),
                          []( const auto &edge ) { return std::string( edge.param.name ); } );

struct Step {
   double second;
   std::optional<double> number; // nothing: not known
   Level level;
};

struct Case {
   const char *name;
   ValueLimits limits;
   std::vector<Step> steps;
};

class StepsTest : public ::testing::TestWithParam<Case> {};

TEST_P( StepsTest, GivesTheLevels ) {
   ValueWatch watch( GetParam().limits );
   for ( const Step &step : GetParam().steps ) {
      if ( step.number )
         watch.known( *step.number, at( step.second ) );
      else
         watch.unknown( at( step.second ) );
      EXPECT_EQ( watch.level(), step.level ) << "at " << step.second << " s";
   }
}

constexpr std::nullopt_t unknown = std::nullopt;

INSTANTIATE_TEST_SUITE_P(
   Each, StepsTest,
   ::testing::Values(
      Case{ "AHighLimitEndsBelowItByTheHysteresis",
            { .highWarning = 80, .highCritical = 90, .hysteresis = 5 },
            { { 1, 91, Level::Critical },
              { 2, 85.1, Level::Critical },
              { 3, 85, Level::Warning },
              { 4, 75.1, Level::Warning },
              { 5, 75, Level::Ok },
              { 6, 80, Level::Ok } } },
      Case{ "ALowLimitEndsAboveItByTheHysteresis",
            { .lowCritical = 10, .lowWarning = 20, .hysteresis = 5 },
            { { 1, 9, Level::Critical },
              { 2, 14.9, Level::Critical },
              { 3, 15, Level::Warning },
              { 4, 24.9, Level::Warning },
              { 5, 25, Level::Ok } } },
      Case{ "WithoutHysteresisItEndsAtTheLimit",
            { .highWarning = 80 },
            { { 1, 80.1, Level::Warning }, { 2, 80, Level::Ok } } },
      Case{ "ItCountsWhenTheHoldTimeIsOver",
            { .highWarning = 80, .hold = 3 },
            { { 1, 81, Level::Ok },
              { 3.9, 81, Level::Ok },
              { 4, 81, Level::Warning },
              { 5, 80, Level::Ok } } },
      Case{ "ABreakStartsTheHoldTimeAnew",
            { .highWarning = 80, .hold = 3 },
            { { 1, 81, Level::Ok },
              { 3, 80, Level::Ok },
              { 4, 81, Level::Ok },
              { 6.9, 81, Level::Ok },
              { 7, 81, Level::Warning } } },
      Case{ "EachLimitHasAHoldTimeOfItsOwn",
            { .highWarning = 80, .highCritical = 90, .hold = 3 },
            { { 1, 81, Level::Ok },
              { 3, 95, Level::Ok },
              { 4, 95, Level::Warning },
              { 6, 95, Level::Critical } } },
      Case{ "TheHoldTimeDoesNotRunWhileNobodyKnows",
            { .highWarning = 80, .hold = 3 },
            { { 1, 81, Level::Ok },
              { 2, unknown, Level::Indeterminate },
              { 5, 81, Level::Ok },
              { 8, 81, Level::Warning } } },
      Case{ "WhatIsNotKnownIsNeitherGoodNorBad",
            four,
            { { 1, 50, Level::Ok }, { 2, unknown, Level::Indeterminate }, { 3, 50, Level::Ok } } },
      Case{ "NothingGetsGoodBecauseNobodyLooks",
            { .highCritical = 90, .hysteresis = 5 },
            { { 1, 91, Level::Critical },
              { 2, unknown, Level::Indeterminate },
              { 3, 86, Level::Critical },
              { 4, 85, Level::Ok } } },
      Case{ "ALatchedOneStaysWithoutAPerson",
            { .highWarning = 80, .latched = true },
            { { 1, 81, Level::Warning },
              { 2, 20, Level::Warning },
              { 3, unknown, Level::Indeterminate },
              { 4, 20, Level::Warning } } } ),
   []( const auto &one ) { return std::string( one.param.name ); } );

TEST( ValueWatchTest, ALatchedLimitEndsWithAnAcknowledgementOnceItIsGood ) {
   ValueWatch watch( { .highWarning = 80, .latched = true } );
   watch.known( 81, at( 1 ) );
   watch.acknowledge( at( 2 ) );
   EXPECT_EQ( watch.level(), Level::Warning ); // it is still beyond
   watch.known( 79, at( 3 ) );
   EXPECT_EQ( watch.level(), Level::Warning );
   watch.acknowledge( at( 4 ) );
   EXPECT_EQ( watch.level(), Level::Ok );
}

TEST( ValueWatchTest, RemembersExtremesWithTheirTimesAndCountsChanges ) {
   ValueWatch watch( four );
   watch.known( 50, at( 1 ) );
   watch.known( 95, at( 2 ) );
   watch.unknown( at( 3 ) );
   watch.known( 30, at( 4 ) );
   watch.known( 40, at( 5 ) );
   const ValueHealth health = watch.health( "°C" );
   EXPECT_EQ( health.lowest->number, 30 );
   EXPECT_EQ( health.lowest->at, at( 4 ).wall );
   EXPECT_EQ( health.highest->number, 95 );
   EXPECT_EQ( health.highest->at, at( 2 ).wall );
   EXPECT_EQ( health.changes, 3u ); // critical, indeterminate, ok
   EXPECT_EQ( health.since, at( 4 ).wall );
   EXPECT_EQ( health.limits, four );
}

TEST( ValueWatchTest, SaysWhichLimitIsCrossed ) {
   ValueWatch watch( four );
   watch.known( 120, at( 1 ) );
   EXPECT_EQ( watch.crossed( "°C" ), "above the critical limit of 90 °C" );
   EXPECT_EQ( watch.limit(), 90 );
   watch.known( 15, at( 2 ) );
   EXPECT_EQ( watch.crossed( "°C" ), "below the warning limit of 20 °C" );
   watch.known( 50, at( 3 ) );
   EXPECT_EQ( watch.crossed( "°C" ), "" );
}

TEST( ValueWatchTest, LimitsOfTheDeviceCountWhereTheBoardHasNone ) {
   ValueWatch watch( { .highWarning = 80 } );
   watch.knows( { .lowWarning = 20, .highWarning = 70 } );
   watch.known( 75, at( 1 ) );
   EXPECT_EQ( watch.level(), Level::Ok );
   watch.known( 19, at( 2 ) );
   EXPECT_EQ( watch.level(), Level::Warning );
}

// One limit, told in another way: it counts from the end of a run of `hold` seconds above it until
// the first number that is at `limit` - `hysteresis` or below.
TEST( ValueWatchTest, AgreesWithAModelOnARandomWalk ) {
   constexpr double limit = 50, hysteresis = 4, hold = 5;
   ValueWatch watch( { .highCritical = limit, .hysteresis = hysteresis, .hold = hold } );
   std::mt19937 random( 1 );
   bool counts = false;
   double number = 50, above = -1; // above: since when
   for ( int second = 0; second < 1'000'000; ++second ) {
      number = std::clamp( number + static_cast<int>( random() % 5 ) - 2.0, 40.0, 60.0 );
      const bool known = random() % 20 != 0;
      if ( known && number > limit && above < 0 )
         above = second;
      if ( known ? number <= limit : !counts )
         above = -1;
      if ( known )
         counts = counts ? number > limit - hysteresis : above >= 0 && second - above >= hold;
      if ( known )
         watch.known( number, at( second ) );
      else
         watch.unknown( at( second ) );
      ASSERT_EQ( watch.level(), !known   ? Level::Indeterminate
                                : counts ? Level::Critical
                                         : Level::Ok )
         << "at " << second << ": " << number;
   }
}

TEST( ValueWatchTest, KeepsTheLastEightNumbersWithTheirTimes ) {
   ValueWatch watch( four );
   for ( int second = 1; second <= 10; ++second )
      watch.known( 20 + second, at( second + 0.25 ), 0.25 );
   const auto last = watch.last();
   ASSERT_EQ( last.size(), 8u );
   EXPECT_EQ( last.front().number, 23 );
   EXPECT_EQ( last.front().at, at( 3 ).wall );
   EXPECT_EQ( last.back().number, 30 );
   EXPECT_EQ( last.back().at, at( 10 ).wall );
   EXPECT_TRUE( watch.health( "" ).last.empty() ); // only where they are asked for
}

TEST( ValueWatchTest, KeepsAReadingOnceThatIsJudgedInSeveralRounds ) {
   ValueWatch watch( four );
   watch.known( 30, at( 1 ) );
   watch.known( 30, at( 2 ), 1 );
   watch.known( 30, at( 3 ), 2.01 );
   watch.known( {}, at( 3 ) );
   EXPECT_EQ( watch.last().size(), 1u );
   watch.known( 30, at( 3.1 ) ); // the same number, read again
   EXPECT_EQ( watch.last().size(), 2u );
}

} // namespace

} // namespace ValueWatchTests
