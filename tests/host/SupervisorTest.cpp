#include "support/PlayedChild.h"

#include <gmock/gmock.h>

namespace Host {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;

class SupervisorTest : public PlayedChild {};

TEST_F( SupervisorTest, InitialisesEveryKindOnceThenAddsInTheFilesOrderThenReads ) {
   EXPECT_EQ( runAll(), ( Commands{ "load", "init temp_sensor", "init led", "add 0", "add 1",
                                    "add 2", "read 0", "read 1", "read 2" } ) );
   EXPECT_TRUE( supervisor->roundDone() );
}

TEST_F( SupervisorTest, ReadsAgainAfterAPeriodAndNotBefore ) {
   runAll();
   now += 999ms;
   EXPECT_EQ( next(), "-" );
   now += 1ms;
   EXPECT_EQ( runAll(), ( Commands{ "read 0", "read 1", "read 2" } ) );
}

TEST_F( SupervisorTest, ReadsTheLastObjectTooWhereARoundTakesLongerThanAPeriod ) {
   runAll();
   std::vector<std::string> read;
   for ( int i = 0; i < 4; ++i ) {
      now += std::chrono::seconds( 2 );
      read.push_back( next() );
      begin();
      good();
   }
   EXPECT_THAT( read, ::testing::Contains( "read 1" ) );
}

TEST_F( SupervisorTest, CountsWholeRoundsAndTellsHowLongTheLastOneTook ) {
   EXPECT_EQ( supervisor->wholeRounds().last, std::nullopt );
   runAll();
   const uint64_t first = supervisor->wholeRounds().count;
   now += 1s;
   for ( const char *read : { "read 0", "read 1" } ) {
      runTo( read );
      now += 100ms;
      good();
   }
   EXPECT_EQ( supervisor->wholeRounds().count, first );
   runTo( "read 2" );
   now += 50ms;
   good();
   EXPECT_EQ( supervisor->wholeRounds().count, first + 1 );
   EXPECT_EQ( supervisor->wholeRounds().last, 250ms );
}

TEST_F( SupervisorTest, CountsTheStartsOfItsChildren ) {
   const uint64_t before = supervisor->childStarts();
   runTo( "read 0" );
   die();
   EXPECT_EQ( supervisor->childStarts(), before + 1 );
}

// A plug-in's process that was only started controls nothing.
TEST_F( SupervisorTest, IsInControlOnceSomethingWasDoneWithAnObject ) {
   EXPECT_FALSE( supervisor->inControl( now ) );
   EXPECT_EQ( next(), "load" );
   good();
   EXPECT_FALSE( supervisor->inControl( now ) );
   runTo( "read 0" );
   EXPECT_TRUE( supervisor->inControl( now ) );
   const Time asked = now;
   now += std::chrono::seconds( 5 );
   EXPECT_EQ( supervisor->inControl( now ), asked ); // it does not answer
   die();
   now += std::chrono::seconds( 5 );
   EXPECT_EQ( supervisor->inControl( now ), asked );
   EXPECT_EQ( next(), "load" );
   EXPECT_EQ( supervisor->inControl( now ), asked );
}

TEST_F( SupervisorTest, WithNothingToDoItIsInControl ) {
   runAll();
   now += std::chrono::milliseconds( 200 );
   EXPECT_EQ( supervisor->inControl( now ), now );
}

TEST_F( SupervisorTest, RunsOneCommandAtATime ) {
   EXPECT_EQ( next(), "load" );
   EXPECT_EQ( next(), "-" );
}

TEST_F( SupervisorTest, CallsAValueStaleAfterThreePeriodsWithoutAReading ) {
   runAll( 24.5 );
   now += 3s;
   EXPECT_EQ( reading( 0 ).state, State::Ok );
   now += 1ms;
   EXPECT_EQ( reading( 0 ).state, State::Stale );
   EXPECT_EQ( reading( 0 ).value, Scalar( 24.5 ) );
   EXPECT_NEAR( object( 0 ).values[0].age, 3.001, 1e-6 );
   runAll( 25 );
   EXPECT_EQ( reading( 0 ).state, State::Ok );
}

TEST_F( SupervisorTest, GivesAFailedReadingTheServersWords ) {
   runTo( "read 0" );
   hear( Trace{ 3, "execute: failure in response request 1 (0x48): no acknowledge" } );
   hear( Reading{ .name = "temperature", .state = State::Unreadable, .fault = { .status = 6 } } );
   good();
   EXPECT_EQ( reading( 0 ).fault, ( Fault{ 6, "request 1 (0x48): no acknowledge" } ) );
   EXPECT_EQ( object( 0 ).state, State::Unreadable ); // it has no other value
   EXPECT_EQ( object( 0 ).fault, reading( 0 ).fault );
}

TEST_F( SupervisorTest, NeverTurnsAFailedReadIntoAbsent ) {
   runTo( "read 0" );
   hear( Reading{ .name = "first", .state = State::Absent, .fault = { .status = 1 } } );
   begin();
   hear( Trace{ 3, "execute: failure in response stuck bus" } );
   hear( Reading{ .name = "second", .state = State::Absent, .fault = { .status = 1 } } );
   good();
   EXPECT_EQ( object( 0 ).values[0].reading.state, State::Absent );
   EXPECT_EQ( object( 0 ).values[1].reading.state, State::Unreadable );
   EXPECT_EQ( object( 0 ).values[1].reading.fault, ( Fault{ 1, "stuck bus" } ) );
}

TEST_F( SupervisorTest, TriesAnObjectThatWasNotMadeAgainInTheSameChild ) {
   runTo( "add 0" );
   hear( Trace{ 0, "driver X not found" } );
   hear( Done{ Fault{ {}, "made no object" } } );
   EXPECT_EQ( object( 0 ).fault.words, "made no object: driver X not found" );
   EXPECT_EQ( runAll(), ( Commands{ "add 1", "add 2", "read 1", "read 2" } ) );
   now += 1s;
   EXPECT_EQ( runAll(), ( Commands{ "add 0", "read 0", "read 1", "read 2" } ) );
   EXPECT_EQ( object( 0 ).state, State::Ok );
}

TEST_F( SupervisorTest, SaysSoonThatTheServerCanNotBeReachedYet ) {
   runTo( "init temp_sensor" );
   now += 499ms;
   supervisor->tick( now );
   EXPECT_EQ( object( 2 ).fault.words, "not brought up yet" );
   now += 1ms;
   supervisor->tick( now );
   for ( size_t i = 0; i < 3; ++i ) {
      EXPECT_EQ( object( i ).state, State::Unreadable );
      EXPECT_THAT( object( i ).fault.words, HasSubstr( "can't reach the SMBus server yet" ) );
   }
   good();
   runAll();
   EXPECT_FALSE( hasUnreadable( supervisor->report( now ) ) );
}

TEST_F( SupervisorTest, TriesToReachTheServerAgainWhenAnInitFails ) {
   runTo( "init temp_sensor" );
   hear( Done{ Fault{ .status = 4 } } );
   EXPECT_EQ( object( 2 ).fault, ( Fault{ 4, "can't reach the SMBus server yet" } ) );
   EXPECT_EQ( next(), "-" );
   now += 1s;
   EXPECT_EQ( runAll().front(), "init temp_sensor" );
}

TEST_F( SupervisorTest, SaysWhyTheServerCanNotBeReached ) {
   supervisor.emplace( board, Limits{}, now, [] { return "/x.sock: permission denied"; } );
   const std::string words = "can't reach the SMBus server yet: /x.sock: permission denied";
   runTo( "init temp_sensor" );
   now += 500ms;
   supervisor->tick( now );
   EXPECT_EQ( object( 2 ).fault.words, words );
   hear( Done{ Fault{ .status = 4 } } );
   EXPECT_EQ( object( 2 ).fault, ( Fault{ 4, words } ) );
   now += 1s;
   runTo( "init temp_sensor" );
   now += 40s;
   die( supervisor->overdue( now ).value() );
   EXPECT_EQ( object( 2 ).fault.words, words );
}

TEST_F( SupervisorTest, BlamesNoSocketForAnInitThatFailsOtherwise ) {
   supervisor.emplace( board, Limits{}, now, [] { return "/x.sock: no such file"; } );
   runTo( "init temp_sensor" );
   die( "Assertion `topology' failed." );
   EXPECT_EQ( object( 2 ).fault.words, "Assertion `topology' failed." );
}

TEST_F( SupervisorTest, DoesNotHideOneKindsMissingFunctionsBehindAnother ) {
   runTo( "init temp_sensor" );
   hear( Done{ Fault{ {}, "the plug-in has no pl_temp_sensor_init" } } );
   EXPECT_EQ( runAll(), ( Commands{ "init led", "add 2", "read 2" } ) );
   EXPECT_EQ( object( 0 ).fault.words, "the plug-in has no pl_temp_sensor_init" );
}

TEST_F( SupervisorTest, ReadsEverythingJustOnceWithTheLimitOnce ) {
   restart( { .once = true } );
   runTo( "add 0" );
   hear( Done{ Fault{ {}, "made no object" } } );
   EXPECT_EQ( runAll(), ( Commands{ "add 1", "add 2", "read 1", "read 2" } ) );
   EXPECT_TRUE( supervisor->roundDone() );
   EXPECT_EQ( supervisor->settled(), 3u );
   now += 1h;
   EXPECT_EQ( next(), "-" );
   EXPECT_EQ( reading( 1 ).state, State::Ok ); // nothing goes stale in what is shown once
}

TEST_F( SupervisorTest, EndsAtAPluginThatCanNotBeLoaded ) {
   EXPECT_EQ( next(), "load" );
   begin( "load" );
   hear( Done{ Fault{ {}, "no such file" } } );
   EXPECT_EQ( supervisor->loadFault()->words, "no such file" );
   EXPECT_EQ( next(), "-" );
}

TEST_F( SupervisorTest, WakesForTheNextThingThatIsDue ) {
   EXPECT_EQ( next(), "load" );
   begin();
   EXPECT_EQ( supervisor->wakeAt( now ), now + 500ms ); // to show that it waits
   good();
   runAll();
   EXPECT_EQ( supervisor->wakeAt( now + 400ms ), now + 1s );
}

TEST_F( SupervisorTest, ReadsKindsAtPeriodsOfTheirOwn ) {
   restart( Limits{ .period = 1s, .periods = { { BoardFiles::Kind::Led, 5s } } } );
   runAll();
   now += 1s;
   EXPECT_EQ( runAll(), ( Commands{ "read 0", "read 1" } ) );
   now += 4s;
   EXPECT_EQ( runAll(), ( Commands{ "read 0", "read 1", "read 2" } ) );
}

} // namespace
} // namespace Host
