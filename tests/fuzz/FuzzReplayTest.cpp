#include "PrivateFolder.h"
#include "StartedProgram.h"
#include "fuzz/Mutator.h"

#include <gmock/gmock.h>

#include <fstream>
#include <set>

namespace FuzzTest {

namespace {

using ::testing::HasSubstr;

class FuzzReplayTest : public ::testing::Test {
 protected:
   int replay( const std::string &count ) {
      TestSupport::StartedProgram program( { FRAGILE, count, folder_.path() } );
      const int code = program.wait();
      output_ = program.output();
      errors_ = program.errors();
      return code;
   }

   const TestSupport::PrivateFolder folder_;
   std::string output_, errors_;
};

TEST_F( FuzzReplayTest, RunsAllSeedsAndAsManyChangedOnes ) {
   folder_.write( "one", "abc" );
   folder_.write( "two", "" );
   EXPECT_EQ( replay( "50" ), 0 ) << errors_;
   EXPECT_EQ( output_, "2 seeds and 50 changed ones\n" );
}

TEST_F( FuzzReplayTest, AnInputThatAbortsTheProcessFailsAndIsTold ) {
   folder_.write( "seed", "break!" );
   EXPECT_NE( replay( "0" ), 0 );
   EXPECT_THAT( errors_, HasSubstr( "seed " + folder_.file( "seed" ) +
                                    ", in hexadecimal digits:\n627265616b21\n" ) );
}

TEST_F( FuzzReplayTest, AnInputThatReadsWhereNothingIsFailsAndIsTold ) {
   folder_.write( "seed", "read" );
   EXPECT_NE( replay( "0" ), 0 );
   EXPECT_THAT( errors_, HasSubstr( "in hexadecimal digits:\n72656164\n" ) );
}

TEST_F( FuzzReplayTest, AChangedInputThatBreaksHasItsNumber ) {
   folder_.write( "seed", "xbreak" );
   EXPECT_NE( replay( "10000" ), 0 );
   EXPECT_THAT( errors_, HasSubstr( "the input that ended it: change " ) );
   EXPECT_THAT( errors_, HasSubstr( "digits:\n627265616b" ) );
}

TEST_F( FuzzReplayTest, ASeedThatCannotBeReadIsAnError ) {
   TestSupport::StartedProgram program( { FRAGILE, "1", folder_.file( "none" ) } );
   EXPECT_EQ( program.wait(), 2 );
   EXPECT_THAT( program.errors(), HasSubstr( "none: can't be read" ) );
}

TEST( MutatorTest, ChangesAreTheSameEveryTime ) {
   Fuzz::Mutator one( { "{ \"did\": 12 }" } ), other( { "{ \"did\": 12 }" } );
   std::set<std::string> inputs;
   for ( int i = 0; i < 1000; ++i ) {
      const std::string input = one.next();
      EXPECT_EQ( input, other.next() );
      inputs.insert( input );
   }
   EXPECT_GT( inputs.size(), 700u );
   EXPECT_TRUE( inputs.contains( "{ \"did\": 4294967295 }" ) );
}

TEST( FuzzRunTest, WrongWordsAreTold ) {
   const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
      { { "fuzz/run" }, "fuzz/run: HOURS is missing" },
      { { "fuzz/run", "soon" }, "fuzz/run: HOURS is a number such as 8 or 0.5, not soon" },
      { { "fuzz/run", "1", "frame" }, "fuzz/run: there is no target frame; there are: frames " },
      { { "fuzz/run", "0.0001" }, "fuzz/run: 0.0001 hours are less than a second" },
   };
   for ( const auto &[command, words] : cases ) {
      TestSupport::StartedProgram program( command );
      EXPECT_EQ( program.wait(), 2 );
      EXPECT_THAT( program.errors(), HasSubstr( words ) );
   }
}

} // namespace

} // namespace FuzzTest
