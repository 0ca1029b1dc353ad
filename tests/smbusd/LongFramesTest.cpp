// Frames that take long: to come, to read or to send. And what they may use meanwhile.
#include "Requests.h"
#include "RunningServer.h"

#include <gtest/gtest.h>

namespace SmbusdTest {

namespace {

using namespace TestSupport;
using TestSupport::read; // not the system's
using namespace std::chrono_literals;

constexpr size_t mebibyte = 1u << 20;

class LongFramesTest : public ::testing::Test {
 protected:
   static void waitForUse( RunningServer &server, size_t bytes ) {
      while ( server.buffers().used() != bytes )
         std::this_thread::yield();
   }
   static void waitForTransfers( RunningServer &server, size_t count ) {
      while ( server.bus( scd ).log().size() != count )
         std::this_thread::yield();
   }
   static inline const std::string scd = "scd(4):1:2";
   const Smbus::TransactionRequest one = transaction( read( 0x48, 0, 1 ) );
   const std::string sixteenMebibytes = "\x80\x80\x80\x08"; // the length of a frame
   const std::string notComplete = "a frame was not complete 20 ms after its first byte";
};

TEST_F( LongFramesTest, AFrameThatIsNotCompleteInTimeEndsTheConnectionWithTheReason ) {
   RunningServer server( { .limits = { .frameTime = 20ms } } );
   RawClient client( server.path() );
   client.send( "\x05x" );
   const auto response = client.receive();
   EXPECT_TRUE( response->failed() );
   EXPECT_EQ( response->error(), notComplete );
   EXPECT_FALSE( client.receive() );
}

TEST_F( LongFramesTest, AFrameInSingleBytesHasNoMoreTime ) {
   RunningServer server( { .limits = { .frameTime = 20ms } } );
   RawClient client( server.path() );
   client.send( sixteenMebibytes );
   std::atomic<bool> answered = false;
   std::thread trickle( [&] {
      while ( !answered )
         client.send( "x" );
   } );
   const auto response = client.receive();
   answered = true;
   trickle.join();
   ASSERT_TRUE( response );
   EXPECT_EQ( response->error(), notComplete );
}

TEST_F( LongFramesTest, TheTimeBetweenFramesIsTheClientsOwn ) {
   RunningServer server( { .limits = { .clientsPerProcess = 64, .frameTime = 20ms } } );
   RawClient client( server.path() ), slow( server.path() );
   client.ask( one );
   slow.send( "\x05x" );
   EXPECT_EQ( slow.receive()->error(), notComplete ); // so long was the other idle
   EXPECT_FALSE( client.ask( one ).failed() );
}

TEST_F( LongFramesTest, Of123UnfinishedFramesOf16MebibytesTheBuffersHoldThree ) {
   RunningServer server( { .limits = { .clients = 128, .clientsPerProcess = 128 } } );
   std::vector<std::unique_ptr<RawClient>> clients;
   const size_t frame = 16 * mebibyte + sixteenMebibytes.size();
   for ( size_t i = 0; i < 123; ++i ) {
      clients.push_back( std::make_unique<RawClient>( server.path() ) );
      clients.back()->send( sixteenMebibytes + "x" );
      if ( i < 3 ) {
         waitForUse( server, ( i + 1 ) * frame );
         continue;
      }
      EXPECT_EQ( clients.back()->receive()->error(),
                 "a frame needs 16777220 bytes, but 50331660 of the 67108864 for large frames are "
                 "in use; send less at once, or try again later" );
      EXPECT_FALSE( clients.back()->receive() );
   }
   EXPECT_FALSE( RawClient( server.path() ).ask( one ).failed() ); // a usual one finds room
   clients.clear();
   waitForUse( server, 0 );
}

TEST_F( LongFramesTest, ARequestThatNeedsMoreOnceItIsReadIsRefused ) {
   // 400,000 bytes of data fit as a frame, but not also as a message.
   RunningServer server( { .buffers = 600'000 } );
   RawClient client( server.path() );
   Smbus::TransactionRequest large = one;
   large.mutable_request( 0 )->set_data( std::string( 400'000, 'x' ) );
   EXPECT_TRUE( client.ask( large ).error().starts_with( "a frame needs 800" ) );
   EXPECT_FALSE( client.receive() );
   waitForUse( server, 0 );
}

TEST_F( LongFramesTest, AnAnswerThatNeedsMoreIsRefusedBeforeTheBusIsUsed ) {
   RunningServer server( { .buffers = 600'000 } );
   RawClient client( server.path() );
   Smbus::TransactionRequest greedy;
   for ( int i = 0; i < 100; ++i )
      *greedy.add_request() = read( 0x48, 0, 8192 );
   EXPECT_TRUE( client.ask( greedy ).error().starts_with( "a frame needs 1" ) );
   EXPECT_TRUE( server.bus( scd ).log().empty() );
   EXPECT_FALSE( client.receive() );
   waitForUse( server, 0 );
}

class UnreadAnswerTest : public LongFramesTest {
 protected:
   UnreadAnswerTest() {
      for ( int i = 0; i < 128; ++i )
         *manyBytes.add_request() = read( 0x48, 0, 8192 );
   }
   Smbus::TransactionRequest manyBytes; // more than a socket holds
};

TEST_F( UnreadAnswerTest, AClientThatDoesNotReadKeepsNoTurnOnTheBus ) {
   RunningServer server;
   RawClient client( server.path() ), other( server.path() );
   client.send( manyBytes );
   waitForTransfers( server, 128 );
   EXPECT_FALSE( other.ask( one ).failed() );
   EXPECT_EQ( client.receive()->response_size(), 128 );
   waitForUse( server, 0 );
}

TEST_F( UnreadAnswerTest, TheConnectionEndsWhenTheAnswerIsNotReadInTime ) {
   RunningServer server( { .limits = { .sendTime = 20ms } } );
   RawClient client( server.path() );
   client.send( manyBytes );
   waitForTransfers( server, 128 );
   waitForUse( server, 0 ); // the connection has ended
   EXPECT_FALSE( client.receive() );
}

} // namespace

} // namespace SmbusdTest
