// What passes at the read-only socket.
#include "smbusd/rights/ReadOnly.h"

#include "Requests.h"
#include "smbus/Decode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace SmbusdTest {
namespace {

using namespace Smbusd;
using namespace TestSupport;
using ::testing::AllOf;
using ::testing::HasSubstr;
using TestSupport::read; // not the system's

class ReadOnlyTest : public ::testing::Test {
 protected:
   const Bus::RootBusId scd_ = *Bus::parseRootBusId( "scd(4):1:2" );
   // Why a transaction doesn't pass.
   template <typename... Requests>
   std::string ask( const Requests &...requests ) const {
      try {
         gate_.check( Bus::decode( transaction( requests... ), std::chrono::seconds( 1 ) ), {} );
      } catch ( const Bus::Refused &why ) {
         return why.what();
      }
      return "passes";
   }
   const ReadOnly gate_{ { { scd_, { 0x70, 0x71 } } }, "/run/smbus.sock" };
};

TEST_F( ReadOnlyTest, ReadsAndBlockReadsPass ) {
   EXPECT_EQ( ask( read( 0x48, 0, 2 ), read( 0x48, 0, 0 ),
                   request( Smbus::REQUEST_BLOCK_READ, 0x58, 0x99, 0 ) ),
              "passes" );
}

TEST_F( ReadOnlyTest, WritesAreRefusedAndSayWhereOneCanWrite ) {
   EXPECT_EQ(
      ask( read( 0x48, 0, 1 ), request( Smbus::REQUEST_WRITE, 0x48, 2, 1, "x" ) ),
      "request 2 of 2: write of 1 byte to 0x48 register 0x02 on scd(4):1:2: this socket is "
      "only for reading, nothing of the transaction was carried out; /run/smbus.sock is for "
      "writing" );
   EXPECT_THAT( ask( request( Smbus::REQUEST_BLOCK_WRITE, 0x48, 2, 1, "x" ) ),
                HasSubstr( "only for reading" ) );
   EXPECT_THAT( ask( request( Smbus::REQUEST_PROCESS_CALL, 0x48, 2, 2, "xy" ) ),
                HasSubstr( "only for reading" ) );
}

TEST_F( ReadOnlyTest, SendBytePassesToANamedMultiplexerAlone ) {
   EXPECT_EQ( ask( sendByte( 0x70, 1 ), sendByte( 0x71, 4 ), read( 0x48, 0, 1 ),
                   sendByte( 0x71, 0 ), sendByte( 0x70, 0 ) ),
              "passes" );
   EXPECT_THAT( ask( sendByte( 0x58, 3 ), read( 0x48, 0, 1 ), sendByte( 0x58, 0 ) ),
                AllOf( HasSubstr( "request 1 of 3: send byte 0x03 to 0x58" ),
                       HasSubstr( "no file of the server names a multiplexer at 0x58" ) ) );
}

TEST_F( ReadOnlyTest, AMultiplexersNameHoldsForItsBusAlone ) {
   Smbus::Request elsewhere = sendByte( 0x70, 0 );
   elsewhere.set_pci( 5 );
   EXPECT_THAT( ask( elsewhere ), HasSubstr( "only for reading" ) );
}

// A multiplexer takes the last byte that is written to it.
TEST_F( ReadOnlyTest, AMultiplexerGetsNoMoreThanOneByte ) {
   Smbus::Request withPec = sendByte( 0x70, 0 );
   withPec.set_pec( true );
   EXPECT_THAT( ask( withPec ), HasSubstr( "only for reading" ) );
   Smbus::Request wide = sendByte( 0x70, 0 );
   wide.set_addr( wide.addr() | 0x100 );
   EXPECT_THAT( ask( wide ), HasSubstr( "only for reading" ) );
   EXPECT_THAT( ask( request( Smbus::REQUEST_WRITE, 0x70, 0, 1, "x" ) ),
                HasSubstr( "only for reading" ) );
}

TEST_F( ReadOnlyTest, AMultiplexerMustNotStayOpen ) {
   EXPECT_THAT( ask( sendByte( 0x70, 1 ), read( 0x48, 0, 1 ) ),
                AllOf( HasSubstr( "leaves the multiplexer 0x70 on scd(4):1:2 open" ),
                       HasSubstr( "close it by a send byte 0x00" ) ) );
   EXPECT_EQ( ask( sendByte( 0x70, 1 ), sendByte( 0x70, 2 ), sendByte( 0x70, 0 ) ), "passes" );
}

TEST( MuxesTest, AreThoseOfTheTopologyAndOfTheRoutes ) {
   const Bus::RootBusId bus = *Bus::parseRootBusId( "scd(4):1:2" );
   NamedMuxes muxes;
   addMuxes( *BoardFiles::loadTopology( KELT_BOARD "/topology.json" ), muxes );
   EXPECT_TRUE( muxes.at( bus ).contains( 0x70 ) );
   EXPECT_FALSE( muxes.at( bus ).contains( 0x48 ) );
   BoardFiles::RoutesFile routes;
   routes.routes.push_back(
      { .bus = bus, .to = {}, .optional = false, .clock = {}, .muxes = { 0x77 }, .place = {} } );
   addMuxes( routes, muxes );
   EXPECT_TRUE( muxes.at( bus ).contains( 0x77 ) );
   EXPECT_TRUE( muxes.at( bus ).contains( 0x70 ) );
}

} // namespace
} // namespace SmbusdTest
