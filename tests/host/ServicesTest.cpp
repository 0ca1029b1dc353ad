#include "host/plugin/Services.h"

#include <gmock/gmock.h>
#include <pl.h>

namespace Host {
namespace {

using ::testing::ElementsAre;

class ServicesTest : public ::testing::Test {
 protected:
   static void count( void *counter ) { ++*static_cast<int *>( counter ); }

   boost::asio::io_context loop;
   std::vector<std::string> traces;
   Services services{ loop, [this]( int level, const std::string &text ) {
                        traces.push_back( std::to_string( level ) + " " + text );
                     } };
   int expired = 0;
   pl_timer_handle timer = pl_timer_add( count, &expired );
};

TEST_F( ServicesTest, FormatTracesOfAnyLength ) {
   const std::string longText( 5000, 'x' );
   pl_trace( 4, "%s(%u, %d)", "f", 3u, -1 );
   pl_trace( 0, "%s", longText.c_str() );
   EXPECT_THAT( traces, ElementsAre( "4 f(3, -1)", "0 " + longText ) );
}

TEST_F( ServicesTest, RunATimerOnceForEverySetting ) {
   EXPECT_EQ( pl_timer_set( timer, 0 ), 0 );
   loop.run();
   EXPECT_EQ( expired, 1 );
   EXPECT_EQ( pl_timer_set( timer, 0 ), 0 );
   loop.restart();
   loop.run();
   EXPECT_EQ( expired, 2 );
}

TEST_F( ServicesTest, KnowTheOwnerOfARunningTimer ) {
   struct Seen {
      const Services &services;
      std::optional<size_t> timerOwner{};
   } seen{ services };
   services.setTimerOwner( 7 );
   const pl_timer_handle another = pl_timer_add(
      []( void *context ) {
         auto *what = static_cast<Seen *>( context );
         what->timerOwner = what->services.runningTimerOwner();
      },
      &seen );
   services.setTimerOwner( 8 );
   pl_timer_set( another, 0 );
   EXPECT_FALSE( services.runningTimerOwner() );
   loop.run();
   EXPECT_EQ( seen.timerOwner, 7u );
   EXPECT_FALSE( services.runningTimerOwner() );
}

TEST_F( ServicesTest, CountASecondSettingInPlaceOfTheFirst ) {
   pl_timer_set( timer, 3'600'000 );
   pl_timer_set( timer, 0 );
   loop.run();
   EXPECT_EQ( expired, 1 );
}

TEST_F( ServicesTest, RunNothingOfACancelledOrDeletedTimer ) {
   pl_timer_set( timer, 0 );
   EXPECT_EQ( pl_timer_cancel( timer ), 0 );
   loop.run();
   pl_timer_set( timer, 0 );
   pl_timer_delete( timer );
   loop.restart();
   loop.run();
   EXPECT_EQ( expired, 0 );
   EXPECT_NE( pl_timer_set( timer, 0 ), 0 );
   EXPECT_NE( pl_timer_cancel( timer ), 0 );
   pl_timer_delete( timer );
}

TEST_F( ServicesTest, LetATimerDeleteItselfWhenItRuns ) {
   static pl_timer_handle own;
   own = pl_timer_add( []( void * ) { pl_timer_delete( own ); }, nullptr );
   pl_timer_set( own, 0 );
   loop.run();
   EXPECT_NE( pl_timer_set( own, 0 ), 0 );
}

TEST( ServicesWithoutALoopTest, MakeNoTimerAndKeepSilent ) {
   EXPECT_EQ( pl_timer_add( []( void * ) {}, nullptr ), nullptr );
   pl_trace( 0, "nobody hears this" );
   EXPECT_NE( pl_timer_set( nullptr, 1 ), 0 );
   EXPECT_NE( pl_timer_cancel( nullptr ), 0 );
   pl_timer_delete( nullptr );
   pl_fd_watcher_delete( nullptr );
}

} // namespace
} // namespace Host
