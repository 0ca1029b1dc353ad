#include "host/serve/StateLog.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

namespace Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

Reading readingOf( const std::string &name, State state, const std::string &fault = "" ) {
   return { .name = name, .state = state, .fault = { {}, fault } };
}

ObjectReport object( const std::string &name, const std::vector<Reading> &values = {},
                     State state = State::Ok, const std::string &fault = "" ) {
   ObjectReport report{ .name = name, .state = state, .fault = { {}, fault } };
   for ( const Reading &value : values )
      report.values.push_back( { value, 0 } );
   return report;
}

class StateLogTest : public ::testing::Test {
 protected:
   std::vector<std::string> changes( const BoardReport &board, bool isRead = true ) {
      std::vector<std::string> texts;
      for ( const StateLog::Line &line : log.changes( board, isRead ) )
         texts.push_back( ( line.isFault ? "! " : "" ) + line.text );
      return texts;
   }

   const Reading good = readingOf( "a", State::Ok ), alsoGood = readingOf( "b", State::Ok );
   StateLog log;
};

TEST_F( StateLogTest, SaysTheSameOfManyObjectsInOneLine ) {
   const BoardReport board{
      object( "t1", { good } ), object( "led" ),
      object( "t2", { good } ), object( "t3", { good } ),
      object( "t4", { good } ), object( "bay", { readingOf( "presence", State::Absent ) } )
   };
   EXPECT_THAT( changes( board ), ElementsAre( "t1, led, t2 and 2 more: ok", "bay: absent" ) );
   EXPECT_THAT( changes( board ), IsEmpty() );
}

TEST_F( StateLogTest, SaysOnceThatASegmentIsQuarantinedHoweverLongThatTakes ) {
   const auto after = [this]( int seconds ) {
      return changes( { object( "a", {}, State::Unreadable,
                                fmt::format( "the bus is quarantined for {} s (timed out), next "
                                             "try in 1 s",
                                             seconds ) ) } );
   };
   EXPECT_THAT( after( 0 ), ElementsAre( "! a: unreadable: the bus is quarantined" ) );
   EXPECT_THAT( after( 1 ), IsEmpty() );
   EXPECT_THAT( after( 100 ), IsEmpty() );
}

TEST_F( StateLogTest, NamesEveryOneOfAFew ) {
   EXPECT_THAT( changes( { object( "a" ), object( "b" ), object( "c" ), object( "d" ) } ),
                ElementsAre( "a, b, c, d: ok" ) );
}

TEST_F( StateLogTest, SaysOneLineOfAWholeObjectThatFailsAndOneWhenItIsBack ) {
   const ObjectReport whole = object( "psu", { good, alsoGood } );
   changes( { whole } );
   const ObjectReport failed = object( "psu",
                                       { readingOf( "a", State::Unreadable, "from 0x8d" ),
                                         readingOf( "b", State::Unreadable, "from 0x8b" ) },
                                       State::Unreadable, "from 0x8d" );
   EXPECT_THAT( changes( { failed } ), ElementsAre( "! psu: unreadable: from 0x8d" ) );
   EXPECT_THAT( changes( { whole } ), ElementsAre( "psu: ok" ) );
}

TEST_F( StateLogTest, NamesTheValueWhereTheOthersAreGood ) {
   const ObjectReport whole = object( "psu", { good, alsoGood } );
   changes( { whole } );
   EXPECT_THAT(
      changes( { object( "psu", { good, readingOf( "b", State::Unreadable, "nack" ) } ) } ),
      ElementsAre( "! psu b: unreadable: nack" ) );
   EXPECT_THAT( changes( { object( "psu", { good, readingOf( "b", State::Stale ) } ) } ),
                ElementsAre( "psu b: stale" ) );
   EXPECT_THAT( changes( { whole } ), ElementsAre( "psu b: ok" ) );
}

TEST_F( StateLogTest, LeavesOutWhatTheDriverDoesNotHaveUnlessThereIsNothingElse ) {
   const Reading missing = readingOf( "b", State::Unsupported );
   EXPECT_THAT( changes( { object( "psu", { good, missing } ), object( "system", { missing } ) } ),
                ElementsAre( "psu: ok", "system: unsupported" ) );
}

TEST_F( StateLogTest, SaysAnotherReasonOfTheSameStateToo ) {
   changes( { object( "t", {}, State::Unreadable, "one" ) } );
   EXPECT_THAT( changes( { object( "t", {}, State::Unreadable, "two" ) } ),
                ElementsAre( "! t: unreadable: two" ) );
}

TEST_F( StateLogTest, SaysOnlyFaultsBeforeEveryObjectWasRead ) {
   const BoardReport board{ object( "t" ), object( "fan", {}, State::Unreadable, "an assertion" ),
                            object( "led", {}, State::Unreadable, "not brought up yet" ) };
   EXPECT_THAT( changes( board, false ), ElementsAre( "! fan: unreadable: an assertion" ) );
   EXPECT_THAT( changes( { object( "t" ), board[1], object( "led" ) } ),
                ElementsAre( "t, led: ok" ) );
}

} // namespace
} // namespace Host
