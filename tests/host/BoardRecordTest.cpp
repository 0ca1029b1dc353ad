#include "host/session/BoardRecord.h"

#include <gtest/gtest.h>
#include <pl.h>

namespace Host {
namespace {

using namespace std::chrono_literals;
using BoardFiles::Kind;

class BoardRecordTest : public ::testing::Test {
 protected:
   ObjectReport object( size_t index ) const { return record.report( now ).at( index ); }
   void readSpeed( size_t fan, int64_t rpm ) {
      record.read( fan, { .name = "speed", .unit = "rpm", .value = rpm }, now );
   }

   const BoardFiles::Board board{ .objects = {
                                     { .kind = Kind::Fan, .name = "fan", .fullScale = 18000 },
                                     { .kind = Kind::Fan, .name = "unknown" },
                                     { .kind = Kind::Led, .name = "led" } } };
   const Limits limits{ .period = 1s, .periods = { { Kind::Led, 5s } }, .staleAfter = 3 };
   Time now{ 1h };
   BoardRecord record{ board, limits, now };
};

TEST_F( BoardRecordTest, StartsWithObjectsThatWereNotBroughtUp ) {
   EXPECT_EQ( object( 0 ).name, "fan" );
   EXPECT_EQ( object( 0 ).type, "fan" );
   EXPECT_EQ( object( 0 ).state, State::Unreadable );
   EXPECT_EQ( record.fault( 0 ).words, "not brought up yet" );
   EXPECT_TRUE( object( 0 ).values.empty() );
}

TEST_F( BoardRecordTest, GivesAFansDutyWhereItsHighestSpeedIsKnown ) {
   for ( const auto &[rpm, percent] :
         { std::pair( 0, 0.0 ), std::pair( 9135, 50.8 ), std::pair( 18000, 100.0 ) } ) {
      readSpeed( 0, rpm );
      EXPECT_EQ( object( 0 ).values.at( 1 ).reading.name, "duty" );
      EXPECT_EQ( object( 0 ).values.at( 1 ).reading.value, Scalar( percent ) ) << rpm;
   }
   readSpeed( 1, 9135 );
   EXPECT_EQ( object( 1 ).values.size(), 1u );
}

TEST_F( BoardRecordTest, MakesObjectsStaleByThePeriodOfTheirKind ) {
   record.good( 0, now );
   record.good( 2, now );
   now += 3s + 1ms;
   EXPECT_EQ( object( 0 ).state, State::Stale );
   EXPECT_EQ( object( 2 ).state, State::Ok );
   now += 12s;
   EXPECT_EQ( object( 2 ).state, State::Stale );
}

TEST_F( BoardRecordTest, KnowsWhetherAnLedBlinksAlsoAfterAFault ) {
   EXPECT_FALSE( record.blinks( 2 ) );
   record.ledWasSet( 2, PL_LED_BEACON, now );
   record.failed( 2, { .words = "x" }, now );
   EXPECT_TRUE( record.blinks( 2 ) );
   EXPECT_EQ( object( 2 ).values.at( 0 ).reading.state, State::Ok );
   record.ledWasSet( 2, PL_LED_GOOD, now );
   EXPECT_FALSE( record.blinks( 2 ) );
   EXPECT_EQ( object( 2 ).values.size(), 1u );
}

} // namespace
} // namespace Host
