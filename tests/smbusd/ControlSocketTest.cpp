// The control socket: what its clients get, and that they can't hold up the busses.
#include "Requests.h"
#include "RunningServer.h"
#include "sockets/Frames.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <semaphore>
#include <thread>

namespace SmbusdTest {

namespace {

using namespace TestSupport;
using TestSupport::read; // not the system's
using namespace std::chrono_literals;

SmbusControl::Request list() {
   SmbusControl::Request request;
   request.set_list( true );
   return request;
}

class ControlSocketTest : public ::testing::Test {
 protected:
   static std::optional<SmbusControl::Response> receive( RawClient &client ) {
      const auto message = client.receiveMessage();
      if ( !message )
         return {};
      SmbusControl::Response response;
      response.ParseFromString( *message );
      return response;
   }
   static std::string errorOf( RawClient &client, const SmbusControl::Request &request ) {
      client.send( Sockets::framed( request ) );
      const auto response = receive( client );
      return response ? response->error() : "the connection has ended";
   }
   const Smbus::TransactionRequest one = transaction( read( 0x48, 0, 1 ) );
   const std::string sixteenMebibytes = "\x80\x80\x80\x08"; // the length of a frame
};

TEST_F( ControlSocketTest, SaysThatNoBoardIsSimulated ) {
   RunningServer server;
   RawClient client( server.controlPath() );
   EXPECT_EQ( errorOf( client, list() ), "no board is simulated" );
   SmbusControl::Request trace;
   trace.set_trace( true );
   EXPECT_EQ( errorOf( client, trace ), "no board is simulated" );
   EXPECT_FALSE( server.tracer().hasListeners() );
}

TEST_F( ControlSocketTest, ATransactionIsCarriedOutWhileAnAnswerTakesLong ) {
   std::binary_semaphore asked( 0 ), goOn( 0 );
   RunningServer server( { .answerControl = [&]( const SmbusControl::Request &, const auto & ) {
      asked.release();
      goOn.acquire();
      return SmbusControl::Response();
   } } );
   RawClient controlling( server.controlPath() ), waiting( server.controlPath() );
   controlling.send( Sockets::framed( list() ) );
   asked.acquire();
   waiting.send( Sockets::framed( list() ) );
   EXPECT_FALSE( RawClient( server.path() ).ask( one ).failed() ); // of a new client, even
   goOn.release();
   EXPECT_EQ( receive( controlling )->error(), "" );
   asked.acquire(); // one after the other
   goOn.release();
   EXPECT_EQ( receive( waiting )->error(), "" );
}

TEST_F( ControlSocketTest, AProcessBeyondItsShareIsToldSo ) {
   RunningServer server( { .controlLimits = { .clients = 4, .clientsPerProcess = 2 } } );
   RawClient first( server.controlPath() ), second( server.controlPath() ),
      third( server.controlPath() );
   errorOf( first, list() );
   errorOf( second, list() );
   EXPECT_EQ( errorOf( third, list() ),
              "too many clients: process " + std::to_string( getpid() ) +
                 " has 2 connections already, and no process may have more" );
   EXPECT_FALSE( RawClient( server.path() ).ask( one ).failed() ); // the sockets count apart
}

TEST_F( ControlSocketTest, TheClientThatWasIdleForTheLongestTimeGivesWay ) {
   RunningServer server( { .controlLimits = { .clients = 2, .clientsPerProcess = 16 } } );
   RawClient first( server.controlPath() ), second( server.controlPath() );
   errorOf( first, list() );
   errorOf( second, list() );
   RawClient third( server.controlPath() );
   EXPECT_EQ( errorOf( third, list() ), "no board is simulated" );
   EXPECT_FALSE( first.receiveMessage() );
   EXPECT_EQ( errorOf( second, list() ), "no board is simulated" );
}

TEST_F( ControlSocketTest, AFrameThatIsNotCompleteInTimeEndsTheConnectionWithTheReason ) {
   RunningServer server( { .controlLimits = { .frameTime = 20ms } } );
   RawClient client( server.controlPath() );
   client.send( "\x05x" );
   EXPECT_EQ( receive( client )->error(), "a frame was not complete 20 ms after its first byte" );
   EXPECT_FALSE( client.receiveMessage() );
}

TEST_F( ControlSocketTest, ItsFramesShareTheBuffersOfTheOtherSocket ) {
   RunningServer server;
   RawClient controlling( server.controlPath() ), other( server.path() );
   controlling.send( sixteenMebibytes + "x" );
   other.send( sixteenMebibytes + "x" );
   while ( server.buffers().used() != 2 * ( ( 16u << 20 ) + 4 ) )
      std::this_thread::yield();
   controlling.leave();
   other.leave();
   while ( server.buffers().used() != 0 )
      std::this_thread::yield();
}

TEST_F( ControlSocketTest, EndsTheConnectionOfAClientThatAsksAndDoesNotRead ) {
   RunningServer server( { .controlLimits = { .sendTime = 500ms },
                           .answerControl = []( const SmbusControl::Request &, const auto & ) {
                              SmbusControl::Response response;
                              response.set_error(
                                 std::string( 1u << 20, 'x' ) ); // more than a socket holds
                              return response;
                           } } );
   RawClient client( server.controlPath() );
   client.send( Sockets::framed( list() ) );
   while ( server.buffers().used() == 0 )
      std::this_thread::yield();
   while ( server.buffers().used() != 0 )
      std::this_thread::yield();
   EXPECT_FALSE( client.receiveMessage() );
}

TEST_F( ControlSocketTest, ATraceThatIsNotReadStaysAndCountsWhatIsLost ) {
   RunningServer server( { .controlLimits = { .sendTime = 20ms },
                           .answerControl = []( const SmbusControl::Request &, const auto & ) {
                              return SmbusControl::Response();
                           } } );
   RawClient client( server.controlPath() );
   SmbusControl::Request trace;
   trace.set_trace( true );
   EXPECT_EQ( errorOf( client, trace ), "" );
   constexpr uint64_t all = 20'000;
   SmbusControl::Transfer transfer;
   transfer.set_operation( std::string( 100, 'x' ) );
   for ( uint64_t i = 1; i < all; ++i )
      server.tracer().report( transfer );
   uint64_t received = 0, lost = 0;
   transfer.set_bus( "the last" );
   for ( bool last = false; !last; ) {
      // Once it reads again, one comes that tells how many are missing before it.
      server.tracer().report( transfer );
      const auto response = receive( client );
      ASSERT_TRUE( response );
      ++received;
      lost += response->transfer().lost();
      last = response->transfer().bus() == "the last";
   }
   EXPECT_GT( lost, 0u );
   EXPECT_LT( received, all );
   EXPECT_TRUE( server.tracer().hasListeners() );
}

TEST_F( ControlSocketTest, ATraceGetsWhatPassedBeforeTheServerStopped ) {
   auto server = std::make_unique<RunningServer>(
      ServerSettings{ .answerControl = []( const SmbusControl::Request &, const auto & ) {
         return SmbusControl::Response();
      } } );
   RawClient client( server->controlPath() );
   SmbusControl::Request trace;
   trace.set_trace( true );
   EXPECT_EQ( errorOf( client, trace ), "" );
   constexpr int all = 240; // more than the socket takes at once
   SmbusControl::Transfer transfer;
   transfer.set_operation( std::string( 1000, 'x' ) );
   for ( int i = 0; i < all; ++i )
      server->tracer().report( transfer );
   std::thread stop( [&] { server.reset(); } );
   int received = 0;
   while ( receive( client ) )
      ++received;
   stop.join();
   EXPECT_EQ( received, all );
}

} // namespace

} // namespace SmbusdTest
