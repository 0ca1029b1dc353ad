#include "support/PlayedChild.h"

#include <gmock/gmock.h>

namespace Host {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;

// Children that die, or hang and are ended.
class SupervisorDeathTest : public PlayedChild {};

TEST_F( SupervisorDeathTest, BlamesTheObjectOfTheRunningOperationAndBringsUpTheOthers ) {
   runTo( "add 1" );
   die( "LM75.cpp:9: f(): Assertion `ok' failed." );
   EXPECT_EQ( object( 1 ).state, State::Unreadable );
   EXPECT_EQ( object( 1 ).fault.words, "LM75.cpp:9: f(): Assertion `ok' failed." );
   EXPECT_TRUE( supervisor->wantsChild( now ) );
   EXPECT_EQ( runAll(), ( Commands{ "load", "init temp_sensor", "init led", "add 0", "add 2",
                                    "read 0", "read 2" } ) );
}

TEST_F( SupervisorDeathTest, TriesAgainAfterOneSecondThenTwiceAsLongUpToAMinute ) {
   runTo( "add 1" );
   for ( const auto wait : { 1s, 2s, 4s, 8s, 16s, 32s, 60s, 60s } ) {
      die();
      const Time death = now;
      EXPECT_EQ( runAll().size(), 7u ); // all but the one
      now = death + wait - 1ms;
      for ( const std::string &command : runAll() )
         EXPECT_NE( command, "add 1" );
      now = death + wait;
      runTo( "add 1" );
   }
}

TEST_F( SupervisorDeathTest, StartsTheBackOffAnewOnceAReadingSucceededNotAnAdding ) {
   runTo( "read 1" );
   die();
   now += 1s;
   runTo( "read 1" ); // it was added again
   die();
   now += 1s;
   for ( const std::string &command : runAll() )
      EXPECT_NE( command, "add 1" );
   now += 1s;
   runAll(); // and now it was read
   now += 1s;
   runTo( "read 1" );
   die();
   now += 1s;
   runTo( "add 1" );
}

TEST_F( SupervisorDeathTest, KeepsTheValuesOfTheOthersThroughADeath ) {
   runAll( 24.5 );
   now += 1s;
   runTo( "read 1" );
   die();
   EXPECT_EQ( reading( 0 ).value, Scalar( 24.5 ) );
   EXPECT_EQ( reading( 0 ).state, State::Ok );
   EXPECT_EQ( reading( 1 ).state, State::Unreadable );
   EXPECT_EQ( reading( 1 ).value, Scalar() );
}

TEST_F( SupervisorDeathTest, EndsAnOperationThatDoesNotReturn ) {
   runTo( "read 0" );
   now += 12s - 1ms;
   EXPECT_FALSE( supervisor->overdue( now ) );
   now += 1ms;
   EXPECT_EQ( supervisor->overdue( now ), "read 0 did not return within 12 s" );
   die( *supervisor->overdue( now ) );
   EXPECT_EQ( object( 0 ).fault.words, "read 0 did not return within 12 s" );
   EXPECT_EQ( supervisor->overdue( now + 1h ), std::nullopt );
}

TEST_F( SupervisorDeathTest, DoesNotEndAChildThatIsBetweenTwoOperations ) {
   runTo( "read 0" );
   now += 12s;
   supervisor->operationIs( {}, now ); // the one that was running has just returned
   EXPECT_FALSE( supervisor->overdue( now ) );
   EXPECT_FALSE( supervisor->overdue( now + 12s - 1ms ) );
   EXPECT_TRUE( supervisor->overdue( now + 12s ) );
}

TEST_F( SupervisorDeathTest, EndsAChildThatDoesNotBeginItsCommand ) {
   runAll();
   now += 1s;
   EXPECT_EQ( next(), "read 0" ); // a timer of the plug-in does not return
   now += 12s;
   supervisor->operationIs( {}, now );
   EXPECT_TRUE( supervisor->overdue( now ) );
}

TEST_F( SupervisorDeathTest, LetsAnInitTryForLongerThanAnOperation ) {
   runTo( "init temp_sensor" );
   EXPECT_FALSE( supervisor->overdue( now + 39s ) );
   EXPECT_THAT( supervisor->overdue( now + 40s ).value_or( "" ),
                HasSubstr( "can't reach the SMBus server yet: init temp_sensor did not" ) );
}

TEST_F( SupervisorDeathTest, WaitsBeforeTheNextChildWhenNothingWasRunning ) {
   runAll();
   supervisor->childDied( "ended by signal 6", now );
   EXPECT_FALSE( supervisor->wantsChild( now + 999ms ) );
   EXPECT_TRUE( supervisor->wantsChild( now + 1s ) );
   supervisor->childDied( "ended by signal 6", now );
   EXPECT_FALSE( supervisor->wantsChild( now + 1s ) );
   EXPECT_TRUE( supervisor->wantsChild( now + 2s ) );
}

TEST_F( SupervisorDeathTest, BlamesNoObjectForADeathBeforeTheCommandBegan ) {
   runAll();
   now += 1s;
   EXPECT_EQ( next(), "read 0" ); // sent, and then a timer of the plug-in ended the child
   supervisor->childDied( "Assertion", now );
   EXPECT_EQ( object( 0 ).state, State::Ok );
}

TEST_F( SupervisorDeathTest, DoesNotBringUpAgainWhatWasReadAlreadyWhenReadingOnce ) {
   restart( { .once = true } );
   runTo( "read 1" );
   die();
   EXPECT_EQ( runAll(), ( Commands{ "load", "init temp_sensor", "init led", "add 2", "read 2",
                                    "add 1", "read 1" } ) );
   EXPECT_TRUE( supervisor->roundDone() );
}

TEST_F( SupervisorDeathTest, TriesAnObjectThatEndedTheChildAgainAfterTheOthersWhenReadingOnce ) {
   restart( { .once = true } );
   runTo( "add 0" );
   die();
   EXPECT_EQ( runAll(), ( Commands{ "load", "init temp_sensor", "init led", "add 1", "add 2",
                                    "read 1", "read 2", "add 0", "read 0" } ) );
   EXPECT_TRUE( supervisor->roundDone() );
   EXPECT_EQ( object( 0 ).state, State::Ok );
}

TEST_F( SupervisorDeathTest, TriesAReadThatEndedTheChildAgainWhenReadingOnce ) {
   restart( { .once = true } );
   runTo( "read 0" );
   die();
   EXPECT_EQ( runAll(), ( Commands{ "load", "init temp_sensor", "init led", "add 1", "add 2",
                                    "read 1", "read 2", "add 0", "read 0" } ) );
   EXPECT_EQ( reading( 0 ).state, State::Ok );
}

TEST_F( SupervisorDeathTest, GivesUpAnObjectAfterTheFourthChildWhenReadingOnce ) {
   restart( { .once = true } );
   for ( int i = 0; i < 4; ++i ) {
      EXPECT_FALSE( supervisor->roundDone() );
      runTo( "add 0" );
      die( "Assertion `silent' failed." );
   }
   runAll();
   EXPECT_TRUE( supervisor->roundDone() );
   EXPECT_EQ( object( 0 ).fault.words, "Assertion `silent' failed." );
   EXPECT_EQ( object( 1 ).state, State::Ok );
}

TEST_F( SupervisorDeathTest, DoesNotRepeatWhatTakesTooLongWhenReadingOnce ) {
   restart( { .once = true } );
   runTo( "read 0" );
   now += 12s;
   die( *supervisor->overdue( now ) );
   for ( const std::string &command : runAll() )
      EXPECT_NE( command, "add 0" );
   EXPECT_TRUE( supervisor->roundDone() );
}

TEST_F( SupervisorDeathTest, EndsReadingOnceWhenTheServerIsGoneAfterADeath ) {
   restart( { .once = true } );
   runTo( "read 0" );
   die();
   runTo( "init temp_sensor" );
   hear( Done{ Fault{ .status = 4 } } );
   EXPECT_TRUE( supervisor->roundDone() );
   EXPECT_EQ( object( 1 ).state, State::Unreadable );
}

} // namespace
} // namespace Host
