#include "smbusd/server/Turns.h"
#include "ManualClock.h"
#include "NoDescriptors.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <condition_variable>
#include <thread>

namespace SmbusdTest {

namespace {

using namespace std::chrono_literals;
using Smbusd::Peer;
using Smbusd::Turns;
using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;

// The connection of a client with a name, a user and a process.
class Connected {
 public:
   Connected( uid_t user, pid_t process ) {
      EXPECT_EQ( socketpair( AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends_ ), 0 );
      peer = { ends_[0], user, process };
   }
   ~Connected() {
      close( ends_[0] );
      leave();
   }
   Connected( const Connected & ) = delete;
   void leave() {
      if ( ends_[1] >= 0 )
         close( std::exchange( ends_[1], -1 ) );
   }
   Peer peer;

 private:
   int ends_[2];
};

class TurnsTest : public ::testing::Test {
 protected:
   ~TurnsTest() override {
      for ( std::thread &thread : threads )
         thread.join();
   }
   // Asks for a turn in a thread of its own. With the turn it notes its name, lets the time pass
   // and gives the turn back.
   void ask( const std::string &name, const Connected &client, Bus::Clock::Time takes ) {
      const size_t before = turns.waiting();
      threads.emplace_back( [this, name, &client, takes] {
         const bool granted = turns.begin( client.peer, clock.now() );
         {
            const std::lock_guard lock( mutex );
            order.push_back( granted ? name : name + " gets none" );
         }
         if ( !granted )
            return;
         clock.advance( takes );
         turns.end();
      } );
      while ( turns.waiting() == before )
         std::this_thread::yield();
   }
   std::vector<std::string> inOrder() {
      for ( std::thread &thread : threads )
         thread.join();
      threads.clear();
      return order;
   }

   TestSupport::ManualClock clock;
   Turns turns{ clock };
   std::mutex mutex;
   std::vector<std::string> order;
   std::vector<std::thread> threads;
   Connected holder{ 1000, 10 };
};

TEST_F( TurnsTest, AFreeBusIsHadAtOnce ) {
   EXPECT_EQ( turns.busySince(), std::nullopt );
   clock.advance( 5s );
   EXPECT_TRUE( turns.begin( holder.peer, clock.now() ) );
   EXPECT_EQ( turns.busySince(), 5s );
   turns.end();
   EXPECT_EQ( turns.busySince(), std::nullopt );
}

TEST_F( TurnsTest, AProcessWithManyTransactionsWaitsBehindAnotherOfItsUser ) {
   Connected busy[] = { { 1000, 10 }, { 1000, 10 }, { 1000, 10 } }, other( 1000, 20 );
   ASSERT_TRUE( turns.begin( holder.peer, clock.now() ) ); // of the busy process
   ask( "busy 1", busy[0], 2s );
   ask( "busy 2", busy[1], 2s );
   ask( "busy 3", busy[2], 2s );
   ask( "other", other, 1ms );
   clock.advance( 2s );
   turns.end();
   EXPECT_THAT( inOrder(), ElementsAre( "other", "busy 1", "busy 2", "busy 3" ) );
}

TEST_F( TurnsTest, AUserWithManyProcessesWaitsBehindAnotherUser ) {
   Connected many[] = { { 1000, 11 }, { 1000, 12 }, { 1000, 13 } }, other( 2000, 20 );
   ASSERT_TRUE( turns.begin( holder.peer, clock.now() ) ); // of the same user
   ask( "process 11", many[0], 1s );
   ask( "process 12", many[1], 1s );
   ask( "process 13", many[2], 1s );
   ask( "other user", other, 1ms );
   clock.advance( 1s );
   turns.end();
   EXPECT_THAT( inOrder(), ElementsAre( "other user", "process 11", "process 12", "process 13" ) );
}

TEST_F( TurnsTest, TheEarlierOfEqualsComesFirst ) {
   Connected first( 1000, 20 ), second( 1000, 30 );
   ASSERT_TRUE( turns.begin( holder.peer, clock.now() ) );
   ask( "first", first, 0s );
   ask( "second", second, 0s );
   turns.end();
   EXPECT_THAT( inOrder(), ElementsAre( "first", "second" ) );
}

// Who stayed away has no time to make up for.
TEST_F( TurnsTest, ANewcomerSharesFromNowOn ) {
   Connected worker[] = { { 1000, 10 }, { 1000, 10 }, { 1000, 10 } };
   Connected newcomer[] = { { 2000, 20 }, { 2000, 20 }, { 2000, 20 } };
   ASSERT_TRUE( turns.begin( holder.peer, clock.now() ) );
   ask( "worker", worker[0], 10s );
   ask( "worker", worker[1], 10s );
   ask( "worker", worker[2], 10s );
   ask( "newcomer", newcomer[0], 10s );
   ask( "newcomer", newcomer[1], 10s );
   ask( "newcomer", newcomer[2], 10s );
   clock.advance( 10s );
   turns.end();
   EXPECT_THAT( inOrder(),
                ElementsAre( "newcomer", "worker", "newcomer", "worker", "newcomer", "worker" ) );
}

TEST_F( TurnsTest, AClientThatHasGoneGetsNoTurn ) {
   Connected gone( 1000, 20 ), next( 1000, 30 );
   ASSERT_TRUE( turns.begin( holder.peer, clock.now() ) );
   ask( "gone", gone, 0s );
   ask( "next", next, 0s );
   gone.leave();
   while ( turns.waiting() != 1 )
      std::this_thread::yield();
   turns.end();
   EXPECT_THAT( inOrder(), UnorderedElementsAre( "gone gets none", "next" ) );
}

#ifndef ORBIS_SANITIZED // which need descriptors themselves
TEST_F( TurnsTest, AClientIsToldThatThereIsNoDescriptorToWaitWith ) {
   ASSERT_TRUE( turns.begin( holder.peer, clock.now() ) );
   {
      const NoDescriptors none;
      EXPECT_THROW( turns.begin( holder.peer, clock.now() ), std::system_error );
   }
   EXPECT_EQ( turns.waiting(), 0u );
   turns.end();
   EXPECT_TRUE( turns.begin( holder.peer, clock.now() ) );
   turns.end();
}
#endif

TEST_F( TurnsTest, StoppingEndsAllThatWaitAndLeavesThePresentTurn ) {
   Connected waiting( 1000, 20 );
   ASSERT_TRUE( turns.begin( holder.peer, clock.now() ) );
   ask( "waiting", waiting, 0s );
   turns.stop();
   EXPECT_THAT( inOrder(), ElementsAre( "waiting gets none" ) );
   EXPECT_FALSE( turns.idleBy( std::chrono::steady_clock::now() ) );
   turns.end();
   EXPECT_TRUE( turns.idleBy( std::chrono::steady_clock::now() ) );
   EXPECT_FALSE( turns.begin( holder.peer, clock.now() ) );
}

} // namespace

} // namespace SmbusdTest
