// Who gets one of the server's connections.
#include "PlatformLibrary/PLSocket.h"
#include "Requests.h"
#include "RunningServer.h"
#include "StartedProgram.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fmt/format.h>

#include <unistd.h>

#include <cstdlib>

namespace SmbusdTest {

namespace {

using namespace TestSupport;
using TestSupport::read; // not the system's
using namespace std::chrono_literals;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class PlacesTest : public ::testing::Test {
 protected:
   using Clients = std::vector<std::unique_ptr<RawClient>>;

   static Clients connect( const RunningServer &to, size_t count ) {
      Clients clients;
      for ( size_t i = 0; i < count; ++i ) {
         clients.push_back( std::make_unique<RawClient>( to.path() ) );
         EXPECT_FALSE( clients.back()->ask( one ).failed() ) << i;
      }
      return clients;
   }
   // All have a transaction that waits until the bus goes on.
   static Clients keepBusy( RunningServer &server, size_t count ) {
      Clients clients = connect( server, count );
      server.bus( scd ).stopAt( describe( 0 ) );
      for ( const auto &client : clients )
         client->send( one );
      server.waitForQueue( scd, count - 1 );
      return clients;
   }
   static std::string describe( unsigned offset ) {
      return fmt::format( "read of 1 byte from 0x48 register {:#04x}", offset );
   }
   static inline const std::string scd = "scd(4):1:2";
   static inline const Smbus::TransactionRequest one = transaction( read( 0x48, 0, 1 ) );
   const std::string tooMany = "too many clients: 64 are connected";
};

TEST_F( PlacesTest, SixtyFourClientsAreServedAndTheNextIsRefusedWhileAllWait ) {
   RunningServer server;
   const Clients clients = keepBusy( server, 64 );
   RawClient next( server.path() );
   const auto response = next.ask( one );
   EXPECT_TRUE( response.failed() );
   EXPECT_EQ( response.error(), tooMany );
   EXPECT_FALSE( next.receive() );
   server.bus( scd ).goOn();
   for ( const auto &client : clients )
      EXPECT_FALSE( client->receive()->failed() );
   EXPECT_FALSE( RawClient( server.path() ).ask( one ).failed() ); // they are idle now
}

TEST_F( PlacesTest, TheClientLibraryIsToldThatThereAreTooManyClients ) {
   RunningServer server;
   const Clients clients = keepBusy( server, 64 );
   setenv( "ORBIS_SMBUS_SOCKET", server.path().c_str(), 1 );
   PlatformLibrary::PLSocket socket;
   ASSERT_EQ( socket.setup(), 0 );
   Smbus::TransactionRequest request = one;
   Smbus::TransactionResponse *response = nullptr;
   ASSERT_GE( socket.sendRequestWait( &request, &response ), 0 );
   EXPECT_EQ( response->error(), tooMany );
   delete response;
   close( socket.fd );
   server.bus( scd ).goOn();
}

TEST_F( PlacesTest, TheClientThatWasIdleForTheLongestTimeGivesWay ) {
   RunningServer server;
   const Clients clients = connect( server, 64 );
   EXPECT_FALSE( clients[0]->ask( one ).failed() ); // now clients[1] is
   const Clients others = connect( server, 2 );
   EXPECT_FALSE( clients[1]->receive() );
   EXPECT_FALSE( clients[2]->receive() );
   EXPECT_FALSE( clients[0]->ask( one ).failed() );
   for ( size_t i = 3; i < clients.size(); ++i )
      EXPECT_FALSE( clients[i]->ask( one ).failed() ) << i;
}

TEST_F( PlacesTest, AClientWhoseTransactionRunsOrWaitsKeepsItsPlace ) {
   RunningServer server( { .limits = { .clients = 4, .clientsPerProcess = 64 } } );
   const Clients busy = keepBusy( server, 2 );
   RawClient idle( server.path() ), other( server.path() );
   idle.ask( {} );
   other.ask( {} );
   RawClient next( server.path() );
   EXPECT_FALSE( next.ask( {} ).failed() );
   EXPECT_FALSE( idle.receive() );
   server.bus( scd ).goOn();
   for ( const auto &client : busy )
      EXPECT_EQ( client->receive()->response( 0 ).data(), scd );
}

TEST_F( PlacesTest, TheClientLibraryConnectsAgainAfterItGaveWay ) {
   RunningServer server( { .limits = { .clients = 4, .clientsPerProcess = 64 } } );
   setenv( "ORBIS_SMBUS_SOCKET", server.path().c_str(), 1 );
   PlatformLibrary::PLSocket socket;
   ASSERT_EQ( socket.setup(), 0 );
   for ( int i = 0; i < 3; ++i ) {
      Smbus::TransactionRequest request = one;
      Smbus::TransactionResponse *response = nullptr;
      ASSERT_GE( socket.sendRequestWait( &request, &response ), 0 ) << i;
      EXPECT_EQ( response->error(), "" );
      delete response;
      RawClient probe( server.path() );
      const Clients others = connect( server, 4 );
      EXPECT_FALSE( probe.receive() ); // it came after the library, and has gone
   }
   close( socket.fd );
}

TEST_F( PlacesTest, AProcessHasSixteenPlacesAndItsNextConnectionIsToldSo ) {
   RunningServer server( { .limits = {} } );
   const Clients clients = connect( server, 16 );
   RawClient next( server.path() );
   EXPECT_EQ( next.ask( one ).error(),
              fmt::format( "too many clients: process {} has 16 connections already, and no "
                           "process may have more",
                           getpid() ) );
   EXPECT_FALSE( next.receive() );
   EXPECT_FALSE( clients[0]->ask( one ).failed() ); // none of its own gives way
}

TEST_F( PlacesTest, AProcessBeyondItsShareTakesNoPlaceFromAnother ) {
   RunningServer server( { .limits = { .clients = 4, .clientsPerProcess = 2 } } );
   const Clients clients = connect( server, 2 );
   Clients refused;
   for ( int i = 0; i < 20; ++i )
      refused.push_back( std::make_unique<RawClient>( server.path() ) );
   StartedProgram other( { ORBIS_SMBUS, "--socket", server.path(), "read", "i2c:0:0x48", "0" } );
   EXPECT_EQ( other.wait(), 0 ) << other.errors();
   EXPECT_FALSE( refused[19]->receive() ); // four wait for their refusal, the others had none
   EXPECT_THAT( refused[0]->ask( one ).error(), StartsWith( "too many clients: " ) );
}

TEST_F( PlacesTest, ARefusedConnectionThatSendsNothingEnds ) {
   RunningServer server( { .limits = { .clientsPerProcess = 1, .frameTime = 20ms } } );
   const Clients clients = connect( server, 1 );
   EXPECT_FALSE( RawClient( server.path() ).receive() );
   EXPECT_FALSE( clients[0]->ask( one ).failed() );
}

// It looks for an answer only after it has sent all.
TEST_F( PlacesTest, AClientIsRefusedEvenWhileItSendsALongFrame ) {
   RunningServer server( { .limits = { .clientsPerProcess = 1 } } );
   const Clients clients = connect( server, 1 );
   RawClient next( server.path() );
   Smbus::TransactionRequest large = one;
   large.mutable_request( 0 )->set_data( std::string( 8u << 20, 'x' ) );
   EXPECT_THAT( next.ask( large ).error(), HasSubstr( "too many clients" ) );
}

} // namespace

} // namespace SmbusdTest
