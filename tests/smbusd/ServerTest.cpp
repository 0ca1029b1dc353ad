#include "Requests.h"
#include "RunningServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace SmbusdTest {

namespace {

using namespace TestSupport;
using TestSupport::read; // not the system's
using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class ServerTest : public ::testing::Test {
 protected:
   RunningServer server;
   const std::string scd = "scd(4):1:2";
   const std::string read48 = "read of 1 byte from 0x48 register 0x00";
};

Smbus::Request onI2c( Smbus::Request request ) {
   request.set_mastertype( Smbus::MASTER_I2C );
   request.set_addr( request.addr() & ~( 0x7Full << 39 ) ); // bus 0
   return request;
}

TEST_F( ServerTest, CarriesOutATransactionOnItsBus ) {
   RawClient client( server.path() );
   const auto response =
      client.ask( transaction( sendByte( 0x70, 1 ), read( 0x48, 0, 1 ), sendByte( 0x70, 0 ) ) );
   EXPECT_FALSE( response.failed() );
   ASSERT_EQ( response.response_size(), 3 );
   EXPECT_EQ( response.response( 1 ).data(), scd );
   EXPECT_THAT( server.bus( scd ).log(),
                ElementsAre( "send byte 0x01 to 0x70", read48, "send byte 0x00 to 0x70" ) );
}

TEST_F( ServerTest, AnswersAnEmptyTransaction ) {
   RawClient client( server.path() );
   const auto response = client.ask( {} );
   EXPECT_FALSE( response.failed() );
   EXPECT_EQ( response.response_size(), 0 );
}

TEST_F( ServerTest, AnswersManyTransactionsOfOneConnectionInOrder ) {
   RawClient client( server.path() );
   for ( int i = 0; i < 3; ++i ) { // sent before the first answer is read
      client.send( transaction( onI2c( read( 0x48, 0, 1 ) ) ) );
      client.send( transaction( read( 0x48, 0, 1 ) ) );
   }
   for ( int i = 0; i < 3; ++i ) {
      EXPECT_EQ( client.receive()->response( 0 ).data(), "i2c:0" );
      EXPECT_EQ( client.receive()->response( 0 ).data(), scd );
   }
}

TEST_F( ServerTest, AcceptsAFrameInSingleBytes ) {
   RawClient client( server.path() );
   const std::string message = transaction( read( 0x48, 0, 1 ) ).SerializeAsString();
   for ( const char byte : static_cast<char>( message.size() ) + message )
      client.send( std::string( 1, byte ) );
   EXPECT_EQ( client.receive()->response( 0 ).data(), scd );
}

TEST_F( ServerTest, RefusesAnUnknownBus ) {
   RawClient client( server.path() );
   Smbus::Request elsewhere = read( 0x48, 0, 1 );
   elsewhere.set_pci( 5 );
   EXPECT_EQ( client.ask( transaction( elsewhere ) ).error(),
              "request 1 of 1: read of 1 byte from 0x48 register 0x00 on scd(5):1:2: no such bus" );
}

TEST_F( ServerTest, KeepsTheConnectionAfterAnInvalidRequest ) {
   RawClient client( server.path() );
   Smbus::Request senseless = read( 0x48, 0, 1 );
   senseless.clear_type();
   const auto response = client.ask( transaction( read( 0x48, 0, 1 ), senseless ) );
   EXPECT_TRUE( response.failed() );
   EXPECT_EQ( response.error(), "request 2 of 2: a known type is missing" );
   EXPECT_TRUE( server.bus( scd ).log().empty() ); // the first was not carried out either
   EXPECT_FALSE( client.ask( transaction( read( 0x48, 0, 1 ) ) ).failed() );
}

TEST_F( ServerTest, KeepsTheConnectionAfterAFrameThatIsNotATransaction ) {
   RawClient client( server.path() );
   client.send( "\x03\xff\xff\xff" );
   EXPECT_EQ( client.receive()->error(), "a frame of 3 bytes is not a transaction" );
   EXPECT_FALSE( client.ask( transaction( read( 0x48, 0, 1 ) ) ).failed() );
}

TEST_F( ServerTest, ServesOtherBussesWhileOneIsSlow ) {
   server.bus( scd ).stopAt( read48 );
   RawClient slow( server.path() ), quick( server.path() );
   slow.send( transaction( read( 0x48, 0, 1 ) ) );
   server.bus( scd ).waitUntilStopped();
   EXPECT_EQ( quick.ask( transaction( onI2c( read( 0x48, 0, 1 ) ) ) ).response( 0 ).data(),
              "i2c:0" );
   server.bus( scd ).goOn();
   EXPECT_EQ( slow.receive()->response( 0 ).data(), scd );
}

TEST_F( ServerTest, RefusesAStuckBusAndServesOthersAndNewClients ) {
   server.bus( scd ).stopAt( read48 );
   RawClient first( server.path() );
   first.send( transaction( read( 0x48, 0, 1 ) ) );
   server.bus( scd ).waitUntilStopped();
   server.clock().advance( 4001ms ); // more than twice the bound of 2 s
   RawClient late( server.path() );
   const auto refusal = late.ask( transaction( read( 0x49, 0, 1 ) ) );
   EXPECT_EQ( refusal.error(),
              "request 1 of 1: read of 1 byte from 0x49 register 0x00 on scd(4):1:2: the bus is "
              "stuck: a transaction has been running for 4001 ms" );
   EXPECT_EQ( late.ask( transaction( onI2c( read( 0x48, 0, 1 ) ) ) ).response( 0 ).data(),
              "i2c:0" );
   EXPECT_FALSE( server.dispatcher().stop( 1ms ) ); // it waits for the stuck transaction
   server.bus( scd ).goOn();
   EXPECT_EQ( first.receive()->response( 0 ).data(), scd );
   EXPECT_TRUE( server.dispatcher().stop( 10s ) );
}

TEST_F( ServerTest, FinishesATransactionBeforeAnotherOnItsBus ) {
   server.bus( scd ).stopAt( read48 );
   RawClient first( server.path() ), second( server.path() );
   first.send( transaction( sendByte( 0x70, 1 ), read( 0x48, 0, 1 ), sendByte( 0x70, 0 ) ) );
   server.bus( scd ).waitUntilStopped();
   second.send( transaction( read( 0x49, 0, 1 ) ) );
   second.send( transaction( onI2c( read( 0x48, 0, 1 ) ) ) );
   server.waitForQueue( scd, 1 );
   server.bus( scd ).goOn();
   EXPECT_EQ( first.receive()->response_size(), 3 );
   EXPECT_EQ( second.receive()->response( 0 ).data(), scd );
   EXPECT_THAT( server.bus( scd ).log(),
                ElementsAre( "send byte 0x01 to 0x70", read48, "send byte 0x00 to 0x70",
                             "read of 1 byte from 0x49 register 0x00" ) );
}

TEST_F( ServerTest, FinishesATransactionWhoseClientDisconnects ) {
   server.bus( scd ).stopAt( read48 );
   RawClient client( server.path() );
   client.send( transaction( sendByte( 0x70, 1 ), read( 0x48, 0, 1 ), sendByte( 0x70, 0 ) ) );
   server.bus( scd ).waitUntilStopped();
   client.leave();
   server.bus( scd ).goOn();
   RawClient( server.path() ).ask( transaction( read( 0x49, 0, 1 ) ) );
   EXPECT_THAT( server.bus( scd ).log(),
                ElementsAre( "send byte 0x01 to 0x70", read48, "send byte 0x00 to 0x70",
                             "read of 1 byte from 0x49 register 0x00" ) );
}

TEST_F( ServerTest, DropsWaitingTransactionsOfAClientThatHasGone ) {
   server.bus( scd ).stopAt( read48 );
   RawClient first( server.path() ), impatient( server.path() );
   first.send( transaction( read( 0x48, 0, 1 ) ) );
   server.bus( scd ).waitUntilStopped();
   impatient.send( transaction( read( 0x49, 0, 1 ) ) );
   server.waitForQueue( scd, 1 );
   impatient.leave();
   server.waitForQueue( scd, 0 ); // the server sees the disconnect
   RawClient last( server.path() );
   last.send( transaction( read( 0x4A, 0, 1 ) ) );
   server.waitForQueue( scd, 1 );
   server.bus( scd ).goOn();
   EXPECT_FALSE( last.receive()->failed() );
   EXPECT_THAT( server.bus( scd ).log(),
                ElementsAre( read48, "read of 1 byte from 0x4a register 0x00" ) );
}

TEST_F( ServerTest, EndsConnectionsWhenItIsStopped ) {
   auto stopped = std::make_unique<RunningServer>();
   RawClient client( stopped->path() );
   ASSERT_FALSE( client.ask( transaction( read( 0x48, 0, 1 ) ) ).failed() );
   stopped.reset();
   EXPECT_FALSE( client.receive() );
}

TEST_F( ServerTest, FinishesTheRunningTransactionWhenItIsStopped ) {
   auto stopped = std::make_unique<RunningServer>();
   StoppableBus &bus = stopped->bus( scd );
   bus.stopAt( read48 );
   RawClient client( stopped->path() );
   client.send( transaction( sendByte( 0x70, 1 ), read( 0x48, 0, 1 ), sendByte( 0x70, 0 ) ) );
   bus.waitUntilStopped();
   std::thread stopper( [&] { stopped.reset(); } );
   EXPECT_FALSE( client.receive() ); // the connection ends at once
   bus.goOn();
   stopper.join(); // the bus was released only afterwards
}

} // namespace

} // namespace SmbusdTest
