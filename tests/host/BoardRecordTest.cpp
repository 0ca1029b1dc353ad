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

   const BoardFiles::Board board{
      .objects = { { .kind = Kind::Fan, .name = "fan", .fullScale = 18000 },
                   { .kind = Kind::Fan, .name = "unknown" },
                   { .kind = Kind::Led, .name = "led" },
                   { .kind = Kind::Smbus, .name = "supply", .reads = "pmbus" } }
   };
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

TEST_F( BoardRecordTest, RemembersWhatAFanWasSetTo ) {
   readSpeed( 1, 9135 );
   record.fanWasSet( 1, 12000, now );
   record.failed( 1, { .words = "x" }, now );
   const auto values = object( 1 ).values;
   ASSERT_EQ( values.size(), 2u );
   EXPECT_EQ( values[1].reading.name, "target" );
   EXPECT_EQ( values[1].reading.unit, "rpm" );
   EXPECT_EQ( values[1].reading.state, State::Ok );
   EXPECT_EQ( values[1].reading.value, Scalar( int64_t{ 12000 } ) );
   now += 1h;
   EXPECT_EQ( object( 1 ).values[1].reading.state, State::Ok ); // never stale
   record.fanWasSet( 1, 9000, now );
   EXPECT_EQ( object( 1 ).values.size(), 2u );
   EXPECT_EQ( object( 1 ).values[1].reading.value, Scalar( int64_t{ 9000 } ) );
}

TEST_F( BoardRecordTest, AFanWhoseSpeedCannotBeReadIsNotOkBecauseItWasSet ) {
   record.good( 1, now );
   record.fanWasSet( 1, 12000, now );
   EXPECT_EQ( object( 1 ).state, State::Ok );
   record.read( 1, { .name = "speed", .state = State::Unreadable, .fault = { 6, "x" } }, now );
   EXPECT_EQ( object( 1 ).state, State::Unreadable );
   EXPECT_EQ( object( 1 ).fault, ( Fault{ 6, "x" } ) );
}

TEST_F( BoardRecordTest, TellsWhatASuppliesRegistersSay ) {
   record.read( 3, { .name = "status_registers", .value = "0x79=0x2848 0x7c=0x18" }, now );
   const auto values = object( 3 ).values;
   ASSERT_EQ( values.size(), 3u );
   EXPECT_EQ( values[0].reading.name, "status" );
   EXPECT_EQ( values[0].reading.value,
              Scalar( "input undervoltage, unit off for insufficient input voltage" ) );
   EXPECT_EQ( values[1].reading.name, "status_word" );
   EXPECT_EQ( values[1].reading.value, Scalar( "0x2848" ) );
   EXPECT_EQ( values[2].reading.value, Scalar( "0x79=0x2848 0x7c=0x18" ) );
   record.read( 3, { .name = "status_registers", .value = "0x79=0x0000" }, now );
   EXPECT_EQ( object( 3 ).values[0].reading.value, Scalar( "ok" ) );
   EXPECT_EQ( object( 3 ).values[1].reading.value, Scalar( "0x0000" ) );
}

TEST_F( BoardRecordTest, ASuppliesStatusThatCouldNotBeReadHasItsFaultInEachValue ) {
   record.read(
      3,
      { .name = "status_registers", .state = State::Unreadable, .fault = { 6, "no acknowledge" } },
      now );
   ASSERT_EQ( object( 3 ).values.size(), 3u );
   for ( const ValueReport &value : object( 3 ).values ) {
      EXPECT_EQ( value.reading.state, State::Unreadable ) << value.reading.name;
      EXPECT_EQ( value.reading.value, Scalar() ) << value.reading.name;
      EXPECT_EQ( value.reading.fault, ( Fault{ 6, "no acknowledge" } ) ) << value.reading.name;
   }
}

TEST_F( BoardRecordTest, KeepsTheLimitsOfASupplyUntilItHasOthers ) {
   using Health::Pmbus::Limit;
   EXPECT_TRUE( record.limits( 3 ).empty() );
   record.limitsWere( 3, { { 0x51, 0x005F } } );
   record.failed( 3, { .words = "x" }, now );
   EXPECT_EQ( record.limits( 3 ),
              std::vector( { Limit{ "temperature", true, Health::Level::Warning, 95, "°C" } } ) );
   record.limitsWere( 3, {} );
   EXPECT_TRUE( record.limits( 3 ).empty() );
}

} // namespace
} // namespace Host
