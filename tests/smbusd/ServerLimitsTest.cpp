#include "Requests.h"
#include "RunningServer.h"

#include <gtest/gtest.h>

namespace SmbusdTest {

namespace {

using namespace TestSupport;
using TestSupport::read; // not the system's

class ServerLimitsTest : public ::testing::Test {
 protected:
   RunningServer server;
};

TEST_F( ServerLimitsTest, AnswersAFrameOfSixteenMebibytes ) {
   RawClient client( server.path() );
   Smbus::Request large = read( 0x48, 0, 1 );
   // The length of the request then has three more bytes; the data have a tag and four bytes of
   // length.
   const size_t rest = transaction( large ).ByteSizeLong() + 8;
   large.set_data( std::string( ( 16u << 20 ) - rest, 'x' ) );
   ASSERT_EQ( transaction( large ).ByteSizeLong(), 16u << 20 );
   EXPECT_TRUE( client.ask( transaction( large ) ).error().starts_with( "request 1 of 1: 1677" ) );
}

TEST_F( ServerLimitsTest, EndsTheConnectionAfterAnOversizedFrame ) {
   RawClient client( server.path() );
   client.send( "\x81\x80\x80\x08" ); // 16 MiB and a byte
   const auto response = client.receive();
   EXPECT_TRUE( response->failed() );
   EXPECT_EQ( response->error(), "a frame of more than 16777216 bytes" );
   EXPECT_FALSE( client.receive() );
}

TEST_F( ServerLimitsTest, EndsTheConnectionAfterAFrameWithoutALength ) {
   RawClient client( server.path() );
   client.send( std::string( 10, '\xff' ) );
   EXPECT_EQ( client.receive()->error(), "the length of a frame is not a varint" );
   EXPECT_FALSE( client.receive() );
}

TEST_F( ServerLimitsTest, RefusesMoreThan4096RequestsAndKeepsTheConnection ) {
   RawClient client( server.path() );
   Smbus::TransactionRequest many;
   for ( int i = 0; i < 4096; ++i )
      *many.add_request() = read( 0x48, 0, 1 );
   EXPECT_EQ( client.ask( many ).response_size(), 4096 );
   *many.add_request() = read( 0x48, 0, 1 );
   EXPECT_EQ( client.ask( many ).error(), "more than 4096 requests in a transaction" );
   EXPECT_FALSE( client.ask( transaction( read( 0x48, 0, 1 ) ) ).failed() );
}

} // namespace

} // namespace SmbusdTest
