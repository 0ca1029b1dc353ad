#include "host/session/ChildDeaths.h"

#include <gtest/gtest.h>

namespace Host {
namespace {

using namespace std::chrono_literals;
using What = DeathCause::What;

class ChildDeathsTest : public ::testing::Test {
 protected:
   DeathCause dieIn( const Command &command, const char *operation = "op" ) {
      CurrentCommand current( limits );
      current.start( command, now );
      if ( *operation )
         current.operationBegins( operation, now );
      return deaths.died( current, now );
   }

   const Limits limits{};
   const Time now{ 1h };
   ChildDeaths deaths;
};

TEST_F( ChildDeathsTest, AreCausedByTheObjectWhoseOperationWasRunning ) {
   EXPECT_EQ( dieIn( AddCommand{ .object = 7 } ), ( DeathCause{ What::Object, 7 } ) );
   EXPECT_EQ( dieIn( ReadCommand{ { 8 } } ), ( DeathCause{ What::Object, 8 } ) );
   EXPECT_EQ( dieIn( ActCommand{ .object = 9 } ), ( DeathCause{ What::Object, 9 } ) );
   EXPECT_TRUE( deaths.mayStart( now ) ); // the object waits, not the child
}

TEST_F( ChildDeathsTest, AreCausedByTheConnectionOrThePluginBeforeObjectsAreUp ) {
   EXPECT_EQ( dieIn( InitCommand{} ).what, What::Connection );
   EXPECT_EQ( dieIn( LoadCommand{} ).what, What::Plugin );
   EXPECT_TRUE( deaths.mayStart( now ) );
}

TEST_F( ChildDeathsTest, OfUnknownCauseMakeTheNextChildWait ) {
   EXPECT_EQ( dieIn( ReadCommand{ { 8 } }, "" ).what, What::Unknown );
   EXPECT_EQ( deaths.nextStart(), now + 1s );
   EXPECT_FALSE( deaths.mayStart( now + 999ms ) );
   EXPECT_EQ( deaths.died( CurrentCommand( limits ), now ).what, What::Unknown );
   EXPECT_EQ( deaths.nextStart(), now + 2s );
   deaths.commandEnded();
   deaths.died( CurrentCommand( limits ), now );
   EXPECT_EQ( deaths.nextStart(), now + 1s );
}

TEST_F( ChildDeathsTest, AChildThatCouldNotBeStartedMakesTheNextOneWait ) {
   deaths.notStarted( now );
   EXPECT_EQ( deaths.nextStart(), now + 1s );
   deaths.notStarted( now );
   EXPECT_EQ( deaths.nextStart(), now + 2s );
}

} // namespace
} // namespace Host
