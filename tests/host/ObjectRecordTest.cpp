#include "host/session/ObjectRecord.h"

#include <gtest/gtest.h>

namespace Host {
namespace {

using namespace std::chrono_literals;

class ObjectRecordTest : public ::testing::Test {
 protected:
   ObjectReport report() const {
      return record.report( { .kind = BoardFiles::Kind::Psu, .name = "o" }, 3s, now );
   }
   Reading value( size_t index = 0 ) const { return report().values.at( index ).reading; }
   void read( const std::string &name, State state, const Scalar &measured = {},
              const std::string &fault = "" ) {
      record.good( now );
      record.read( { .name = name, .state = state, .value = measured, .fault = { {}, fault } },
                   now );
   }

   Time now{ 1h };
   ObjectRecord record{ now };
};

TEST_F( ObjectRecordTest, MakesAnAbsenceStaleThatWasNotConfirmedForLong ) {
   read( "presence", State::Absent );
   now += 3s;
   EXPECT_EQ( value().state, State::Absent );
   now += 1ms;
   EXPECT_EQ( value().state, State::Stale );
   EXPECT_EQ( value().value, Scalar( false ) );
   read( "presence", State::Absent );
   EXPECT_EQ( value().state, State::Absent );
}

TEST_F( ObjectRecordTest, MakesAnUnknownModuleStaleToo ) {
   read( "presence", State::Unmanaged );
   now += 3s + 1ms;
   EXPECT_EQ( value().state, State::Stale );
   EXPECT_EQ( value().value, Scalar( true ) );
}

TEST_F( ObjectRecordTest, NeverMakesStaleWhatTheDriverDoesNotHave ) {
   read( "input_power", State::Unsupported );
   now += 1h;
   EXPECT_EQ( value().state, State::Unsupported );
}

TEST_F( ObjectRecordTest, IsUnreadableWhenAllItsValuesAre ) {
   read( "power", State::Unreadable, {}, "first" );
   read( "voltage", State::Unreadable, {}, "second" );
   read( "current", State::Unsupported );
   EXPECT_EQ( report().state, State::Unreadable );
   EXPECT_EQ( report().fault.words, "first" );
   read( "voltage", State::Ok, 12.0 );
   EXPECT_EQ( report().state, State::Ok );
   EXPECT_EQ( report().fault, Fault() );
}

TEST_F( ObjectRecordTest, IsStaleWhenAllItsValuesAreAndUnreadableWhenOneIs ) {
   record.good( now );
   record.read( { .name = "a", .state = State::Stale, .value = 1.0, .fault = { {}, "old" } }, now );
   EXPECT_EQ( report().state, State::Stale );
   read( "b", State::Unreadable, {}, "gone" );
   EXPECT_EQ( report().state, State::Unreadable );
   EXPECT_EQ( report().fault.words, "gone" );
}

TEST_F( ObjectRecordTest, IsOkWhileAnyValueIsGood ) {
   for ( const State good : { State::Ok, State::Absent, State::Unmanaged } ) {
      read( "presence", good );
      read( "tx_fault", State::Unreadable );
      EXPECT_EQ( report().state, State::Ok );
   }
}

TEST_F( ObjectRecordTest, IsOkWithValuesThatTheDriverDoesNotHave ) {
   read( "reload_cause", State::Unsupported );
   EXPECT_EQ( report().state, State::Ok );
}

TEST_F( ObjectRecordTest, IsNotJudgedByASetting ) {
   record.good( now );
   record.keep( { .name = "setting", .value = std::string( "good" ) }, now );
   now += 2s;
   EXPECT_EQ( report().state, State::Ok );
}

} // namespace
} // namespace Host
