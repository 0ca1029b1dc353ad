#include "PLSocketFixture.h"

#include <fcntl.h>
#include <poll.h>

#include <csignal>

namespace PlatformTest {

namespace {

using PLSocketTest = PLSocketFixture;

void answersEveryRequest( const Connection &connection, unsigned number ) {
   Smbus::TransactionRequest request;
   while ( connection.readRequest( request ) )
      connection.answer( numbered( number ) );
}

bool waitUntilReadable( int fd ) {
   pollfd watched{ fd, POLLIN, 0 };
   return poll( &watched, 1, 5000 ) == 1;
}

TEST_F( PLSocketTest, StartsWithoutDescriptorAndWatcher ) {
   EXPECT_EQ( client.fd, -1 );
   EXPECT_EQ( client.watcher, nullptr );
}

TEST_F( PLSocketTest, SendsARequestAndReturnsTheAnswer ) {
   std::string seen;
   ScriptedServer server( path, [&]( const Connection &connection, unsigned ) {
      Smbus::TransactionRequest got;
      connection.readRequest( got );
      seen = got.SerializeAsString();
      connection.answer( numbered( 7 ) );
      connection.waitForClientToGo();
   } );
   ASSERT_EQ( client.setup(), 0 );
   EXPECT_EQ( ask(), "7" );
   EXPECT_EQ( seen, request.SerializeAsString() );
}

TEST_F( PLSocketTest, KeepsOneConnectionForManyRequests ) {
   ScriptedServer server( path, answersEveryRequest );
   for ( int i = 0; i < 100; ++i )
      ASSERT_EQ( ask(), "0" );
   EXPECT_EQ( server.connections(), 1u );
}

TEST_F( PLSocketTest, ConnectsByItselfWhenItWasNotSetUp ) {
   ScriptedServer server( path, answersEveryRequest );
   EXPECT_EQ( ask(), "0" );
}

TEST_F( PLSocketTest, ClosesItsDescriptorInStartedPrograms ) {
   ScriptedServer server( path, answersEveryRequest );
   ASSERT_EQ( client.setup(), 0 );
   EXPECT_TRUE( fcntl( client.fd, F_GETFD ) & FD_CLOEXEC );
}

TEST_F( PLSocketTest, SendsAndReceivesSixteenMebibytes ) {
   constexpr size_t limit = 16u << 20;
   Smbus::TransactionResponse large = numbered( 1 );
   large.mutable_response( 0 )->set_data( std::string( limit - 10, 'x' ) );
   ASSERT_EQ( large.ByteSizeLong(), limit );
   ScriptedServer server( path, [&]( const Connection &connection, unsigned ) {
      Smbus::TransactionRequest got;
      while ( connection.readRequest( got ) )
         connection.answer( large );
   } );
   request.mutable_request( 0 )->set_data( std::string( limit - 100, 'y' ) );
   EXPECT_EQ( ask().size(), limit - 10 );
}

TEST_F( PLSocketTest, SendsALargeRequestAndNothingMore ) {
   ScriptedServer server( path, answersEveryRequest );
   request.mutable_request( 0 )->set_data( std::string( 8u << 20, 'y' ) ); // over any socket buffer
   EXPECT_EQ( ask(), "0" );
   EXPECT_EQ( ask(), "0" );
   EXPECT_EQ( server.connections(), 1u );
}

std::atomic<unsigned> interruptions;

TEST_F( PLSocketTest, ContinuesAfterASignal ) {
   struct sigaction counting {
   }, before{};
   counting.sa_handler = []( int ) { ++interruptions; };
   sigaction( SIGUSR1, &counting, &before ); // without SA_RESTART: calls end with EINTR
   const pthread_t host = pthread_self();
   const auto interrupt = [host] {
      for ( int i = 0; i < 2000; ++i ) {
         const unsigned had = interruptions;
         pthread_kill( host, SIGUSR1 );
         while ( interruptions == had )
            std::this_thread::yield();
      }
   };
   ScriptedServer server( path, [&]( const Connection &connection, unsigned ) {
      interrupt();
      Smbus::TransactionRequest got;
      connection.readRequest( got );
      interrupt();
      connection.answer( numbered( 7 ) );
      connection.waitForClientToGo();
   } );
   request.mutable_request( 0 )->set_data( std::string( 8u << 20, 'y' ) ); // over any socket buffer
   EXPECT_EQ( ask(), "7" );
   server.stop();
   sigaction( SIGUSR1, &before, nullptr );
}

TEST_F( PLSocketTest, ConnectsAgainAfterARestartOfTheServer ) {
   {
      ScriptedServer first( path, []( const Connection &connection, unsigned ) {
         Smbus::TransactionRequest got;
         connection.readRequest( got );
         connection.answer( numbered( 1 ) );
      } );
      ASSERT_EQ( ask(), "1" );
      ASSERT_TRUE( waitUntilReadable( client.fd ) );
   }
   ScriptedServer second( path, []( const Connection &connection, unsigned ) {
      Smbus::TransactionRequest got;
      connection.readRequest( got );
      connection.answer( numbered( 2 ) );
   } );
   EXPECT_EQ( ask(), "2" );
}

TEST_F( PLSocketTest, NeverMistakesAnUnexpectedFrameForAnAnswer ) {
   ScriptedServer server( path, []( const Connection &connection, unsigned number ) {
      Smbus::TransactionRequest got;
      connection.readRequest( got );
      connection.answer( numbered( 10 * number ) );
      connection.answer( numbered( 666 ) );
      connection.waitForClientToGo();
   } );
   EXPECT_EQ( ask(), "0" );
   ASSERT_TRUE( waitUntilReadable( client.fd ) ); // the second frame, or the end of the connection
   EXPECT_EQ( ask(), "10" );
}

TEST_F( PLSocketTest, NeverMistakesALateAnswerForAnotherRequests ) {
   limitIs( 50 );
   ScriptedServer server( path, []( const Connection &connection, unsigned number ) {
      Smbus::TransactionRequest got;
      connection.readRequest( got );
      if ( number == 0 )
         connection.waitForClientToGo();
      connection.answer( numbered( number ) );
      connection.waitForClientToGo();
   } );
   EXPECT_EQ( ask(), "ETIMEDOUT" );
   limitIs( 5000 );
   EXPECT_EQ( ask(), "1" );
}

TEST_F( PLSocketTest, ReplacesAnOpenConnectionInSetup ) {
   ScriptedServer server( path, answersEveryRequest );
   ASSERT_EQ( client.setup(), 0 );
   ASSERT_EQ( client.setup(), 0 );
   EXPECT_EQ( ask(), "1" );
}

} // namespace

} // namespace PlatformTest
