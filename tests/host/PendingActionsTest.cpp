#include "support/PlayedChild.h"

#include <algorithm>

namespace Host {
namespace {

using namespace std::chrono_literals;

// Actions of the board's LED, object 2.
class AskTest : public PlayedChild {
 protected:
   void ask( int64_t setting = 1 ) {
      supervisor->ask(
         2, { "set_light_setting", { setting } },
         [this]( const Reading &reading ) { answers.push_back( reading ); }, now );
   }
   void answerGood() {
      begin( "set_light_setting" );
      hear( Reading{ .name = "set_light_setting" } );
      good();
   }
   std::vector<Reading> answers;
};

TEST_F( AskTest, WaitsUntilTheObjectIsUpAndThenGoesBeforeReadings ) {
   ask();
   EXPECT_EQ( runAll(), ( Commands{ "load", "init temp_sensor", "init led", "add 0", "add 1",
                                    "add 2", "act 2", "read 0", "read 1", "read 2" } ) );
   EXPECT_EQ( answers.size(), 1u );
}

TEST_F( AskTest, KeepsTheLastSettingOfAnLedThatTookIt ) {
   runAll();
   ask( 3 );
   EXPECT_EQ( next(), "act 2" );
   answerGood();
   EXPECT_EQ( answers.at( 0 ).state, State::Ok );
   EXPECT_EQ( reading( 2 ).name, "setting" );
   EXPECT_EQ( reading( 2 ).value, Scalar( "bad" ) );
   now += 1h; // a setting does not become stale
   EXPECT_EQ( reading( 2 ).state, State::Ok );
}

TEST_F( AskTest, GivesTheFaultOfAnActionAndKeepsTheLastSetting ) {
   runAll();
   ask( 1 );
   next();
   answerGood();
   ask( 4 );
   next();
   begin( "set_light_setting" );
   hear( Trace{ 3, "execute: failure in response nack" } );
   hear( Reading{ .name = "set_light_setting", .state = State::Unreadable, .fault = { 6, "" } } );
   good();
   EXPECT_EQ( answers.at( 1 ).fault, ( Fault{ 6, "nack" } ) );
   EXPECT_EQ( reading( 2 ).value, Scalar( "good" ) );
}

TEST_F( AskTest, AnswersWithTheCauseWhenTheActionEndsTheChild ) {
   runAll();
   ask();
   next();
   begin( "set_light_setting" );
   die( "Assertion `x' failed." );
   EXPECT_EQ( answers.at( 0 ).state, State::Unreadable );
   EXPECT_EQ( answers.at( 0 ).fault.words, "Assertion `x' failed." );
   ask(); // while the object waits for its next try
   EXPECT_EQ( answers.size(), 2u );
}

TEST_F( AskTest, HasAnLedThatBlinkedBlinkAgainInTheNextChild ) {
   runAll();
   ask( 6 );
   next();
   answerGood();
   die();
   now += 2s;
   const auto commands = runAll();
   EXPECT_EQ( commands.front(), "load" );
   EXPECT_NE( std::find( commands.begin(), commands.end(), "act 2" ), commands.end() );
}

TEST_F( AskTest, BringsUpNoMoreThanOneObjectNeeds ) {
   restart( Limits{ .only = 2 } );
   ask();
   EXPECT_EQ( runAll(), ( Commands{ "load", "init led", "add 2", "act 2" } ) );
   now += 10s;
   EXPECT_EQ( next(), "-" );
}

TEST_F( AskTest, AnswersWhenThePluginCanNotBeLoaded ) {
   ask();
   next();
   hear( Done{ Fault{ .words = "no such file" } } );
   EXPECT_EQ( answers.at( 0 ).fault.words, "no such file" );
}

} // namespace
} // namespace Host
