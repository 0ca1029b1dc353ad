// Compares batches with the complete messages that reach the server.
#include "OrbisGeneric/Ham/OrbisSmbusHam.h"
#include "OrbisGeneric/Components/NotImplementedException.h"
#include "support/PluginFixture.h"

#include <cerrno>

namespace {

using Words = std::vector<std::string>;

// A device at 0x48 on a simulated bus 0, without muxes.
class OrbisSmbusHamTest : public PluginFixture {
 protected:
   OrbisSmbusHamTest() {
      connect( "[]" );
      ham.address.address = 0x48;
      ham.address.addrSize = 1;
      ham.init();
      ham.prepare();
   }
   // The request that one queue function puts into the message.
   std::string sent() {
      EXPECT_EQ( ham.execute(), PL_STATUS_OK );
      EXPECT_EQ( FakeServer::received.back().request_size(), 1 );
      ham.prepare();
      return FakeServer::lastInWords().at( 0 );
   }

   Ham::OrbisSmbusHam ham;
};

TEST_F( OrbisSmbusHamTest, EveryOperationIsOneRequest ) {
   const auto wire = []( const std::string &kind, const std::string &rest ) {
      return kind + " 0x48 reg " + rest;
   };
   const std::string path = " bus 0 accel 0 size 1 master 0 pci 0 ";
   ham.addRecvByte();
   EXPECT_EQ( sent(), wire( "read", "0x0" + path + "len 0" ) );
   ham.addRead8( 0x10 );
   EXPECT_EQ( sent(), wire( "read", "0x10" + path + "len 1" ) );
   ham.addRead16( 0x12345678 );
   EXPECT_EQ( sent(), wire( "read", "0x12345678" + path + "len 2" ) );
   ham.addRead( 0x11, 33 );
   EXPECT_EQ( sent(), wire( "read", "0x11" + path + "len 33" ) );
   ham.addReadBlock( 0x12 );
   EXPECT_EQ( sent(), wire( "readBlock", "0x12" + path + "len 0" ) );
   ham.addSendByte( 0x80, true );
   EXPECT_EQ( sent(), wire( "write", "0x80" + path + "len 0 pec" ) );
   ham.addWrite8( 0x13, 5, false );
   EXPECT_EQ( sent(), wire( "write", "0x13" + path + "len 1 data 05" ) );
   ham.addWrite16( 0x14, 0x1234, true );
   EXPECT_EQ( sent(), wire( "write", "0x14" + path + "len 2 data 34 12 pec" ) );
   ham.addWrite( 0x15, "abc", 3, false );
   EXPECT_EQ( sent(), wire( "write", "0x15" + path + "len 3 data 61 62 63" ) );
   ham.addWriteBlock( 0x16, "abc", 2, true );
   EXPECT_EQ( sent(), wire( "writeBlock", "0x16" + path + "len 2 data 61 62 pec" ) );
   ham.addProcessCall( 0x17, 0x1234 );
   EXPECT_EQ( sent(), wire( "call", "0x17" + path + "len 2 data 34 12" ) );
}

TEST_F( OrbisSmbusHamTest, EveryFieldOfARequestIsPresent ) {
   ham.addRead8( 0 );
   ham.execute();
   const auto &request = FakeServer::received.back().request( 0 );
   EXPECT_TRUE( request.has_addr() && request.has_pci() && request.has_mastertype() &&
                request.has_type() && request.has_length() && request.has_pec() );
   EXPECT_FALSE( request.has_data() || request.has_client_word_7() || request.has_client_word_8() ||
                 request.has_client_word_9() || request.has_client_word_10() );
   EXPECT_FALSE( FakeServer::received.back().has_id() ||
                 FakeServer::received.back().has_timeout_ms() ||
                 FakeServer::received.back().has_retries() );
}

TEST_F( OrbisSmbusHamTest, TheAddressFieldsAreInTheHighHalfOfTheAddressWord ) {
   ham.address = { .offset = 0,
                   .address = 0x55,
                   .bus = 0x2A,
                   .accel = 0x71,
                   .spare = 1,
                   .busTimeout = 5,
                   .addrSize = 2,
                   .extraDelay = 1,
                   .writeDelay = 2,
                   .readDelay = 1 };
   ham.addRead8( 0x89ABCDEF );
   ham.execute();
   const uint64_t upper = 0x55u | 0x2Au << 7 | 0x71u << 14 | 1u << 21 | 5u << 22 | 2u << 25 |
                          1u << 27 | 2u << 28 | 1u << 30;
   EXPECT_EQ( FakeServer::received.back().request( 0 ).addr(), upper << 32 | 0x89ABCDEFu );
}

TEST_F( OrbisSmbusHamTest, TheRecordKeepsTheLastOffset ) {
   ham.addRead8( 0x10 );
   ham.addWrite8( 0x11, 1, false );
   EXPECT_EQ( ham.address.offset, 0x11u );
}

TEST_F( OrbisSmbusHamTest, WritesUseUpAnId ) {
   EXPECT_EQ( ham.lastResponseId, 0xFFFFFFFFu );
   EXPECT_EQ( ham.addRead8( 0x10 ), 0u );
   ham.addWrite8( 0x11, 5, false );
   EXPECT_EQ( ham.lastResponseId, 1u );
   EXPECT_EQ( ham.addRead16( 0x12 ), 2u );
   EXPECT_EQ( ham.addProcessCall( 0x13, 1 ), 3u );
}

TEST_F( OrbisSmbusHamTest, FetchesTheAnswerOfEachId ) {
   FakeServer::answersWith( { "\x7F", std::string( "\x34\x92", 2 ), "hello", "" } );
   const auto byte = ham.addRead8( 1 );
   const auto word = ham.addRead16( 2 );
   const auto block = ham.addReadBlock( 3 );
   ham.addWrite8( 4, 0, false );
   ASSERT_EQ( ham.execute(), PL_STATUS_OK );
   EXPECT_EQ( ham.get8( byte ), 0x7F );
   EXPECT_EQ( ham.get16( word ), 0x9234 );
   EXPECT_EQ( ham.getBlock( block, 0 ), "hello" ); // all bytes that the server sent
   EXPECT_EQ( ham.getBlock( block, 2 ), "hello" );
}

TEST_F( OrbisSmbusHamTest, AnAnswerOfTheWrongSizeStopsTheProcess ) {
   FakeServer::answersWith( { "ab", "a", "" } );
   const auto pair = ham.addRead8( 1 ), single = ham.addRead16( 2 ), none = ham.addRead8( 3 );
   ASSERT_EQ( ham.execute(), PL_STATUS_OK );
   const std::string place = "OrbisGeneric/Ham/OrbisSmbusHam\\.cpp:[0-9]+: .*";
   EXPECT_DEATH( ham.get8( pair ), place + "get8.*Assertion `data.size\\(\\) == 1' failed" );
   EXPECT_DEATH( ham.get8( none ), place + "get8.*Assertion `data.size\\(\\) == 1' failed" );
   EXPECT_DEATH( ham.get16( single ), place + "get16.*Assertion `data.size\\(\\) == 2' failed" );
}

TEST_F( OrbisSmbusHamTest, AnIdOutsideTheBatchStopsTheProcess ) {
   const auto id = ham.addRead8( 1 );
   ASSERT_EQ( ham.execute(), PL_STATUS_OK );
   EXPECT_DEATH( ham.getBlock( Ham::INVALID_RESPONSE_ID, 0 ),
                 ::testing::HasSubstr( "Assertion `idx != INVALID_RESPONSE_ID' failed" ) );
   EXPECT_DEATH( ham.getBlock( id + 1, 0 ),
                 ::testing::HasSubstr( "Assertion `( uint32_t )response_.response_size() > "
                                       "prepareRequestCount_ + idx' failed" ) );
   EXPECT_EQ( ham.addWrite8( 1, 1, false ), Ham::INVALID_RESPONSE_ID );
}

TEST_F( OrbisSmbusHamTest, ASocketFailureIsStatus4WithoutAnyResults ) {
   FakeServer::answer = []( auto *, auto **response ) {
      *response =
         new Smbus::TransactionResponse; // the Ham must delete a response that PLSocket has set
      errno = ETIMEDOUT;
      return -1;
   };
   const auto id = ham.addRead8( 1 );
   EXPECT_EQ( ham.execute(), 4 );
   EXPECT_TRUE( TestHost::traced( 4, "executing OrbisSmbusHam request" ) );
   EXPECT_TRUE( TestHost::traced( 3, "execute: error. 110, Connection timed out" ) );
   EXPECT_DEATH( ham.get8( id ), "response_size" );
}

TEST_F( OrbisSmbusHamTest, AFailureFromTheServerIsStatus6AndItsTextIsTraced ) {
   FakeServer::answer = []( auto *, auto **response ) {
      *response = new Smbus::TransactionResponse;
      ( *response )->set_failed( true );
      ( *response )->set_error( "no acknowledge" );
      return 0;
   };
   ham.addRead8( 1 );
   EXPECT_EQ( ham.execute(), 6 );
   EXPECT_TRUE( TestHost::traced( 3, "execute: failure in response no acknowledge" ) );
}

TEST_F( OrbisSmbusHamTest, AFailureWithoutATextHasAnUnknownReason ) {
   FakeServer::answer = []( auto *, auto **response ) {
      *response = new Smbus::TransactionResponse;
      ( *response )->set_failed( true );
      return 0;
   };
   ham.addRead8( 1 );
   EXPECT_EQ( ham.execute(), 6 );
   EXPECT_TRUE( TestHost::traced( 3, "execute: failure in response unknown reason" ) );
}

TEST_F( OrbisSmbusHamTest, ASetRetryCountIsSent ) {
   ham.retryCountIs( 3 );
   ham.addRead8( 1 );
   EXPECT_EQ( ham.execute(), PL_STATUS_OK );
   EXPECT_EQ( FakeServer::received.back().retries(), 3u );
}

TEST_F( OrbisSmbusHamTest, OnlyTheDeviceAddressIsReplaced ) {
   ham.address.bus = 0x7F;
   ham.address.addrSize = 2;
   ham.setAddress( 0xF1 );
   EXPECT_EQ( ham.getAddress(), 0x71 );
   EXPECT_EQ( ham.address.bus, 0x7Fu );
   EXPECT_EQ( ham.address.addrSize, 2u );
}

TEST_F( OrbisSmbusHamTest, ThirtyTwoBitOperationsAreNotSupported ) {
   uint32_t value;
   EXPECT_THROW( ham.read32( 0, &value ), NotImplementedException );
   EXPECT_THROW( ham.write32( 0, 1, false ), NotImplementedException );
   EXPECT_THROW( ham.get32( 0 ), NotImplementedException );
   EXPECT_TRUE( FakeServer::received.empty() );
}

TEST_F( OrbisSmbusHamTest, AnUnknownMasterTypeStopsTheProcess ) {
   ham.masterType = static_cast<Smbus::MasterType>( 9 );
   EXPECT_DEATH( ham.addRead8( 1 ), ::testing::HasSubstr( "::Smbus::MasterType_IsValid(value)" ) );
}

TEST_F( OrbisSmbusHamTest, ANewBatchForgetsTheLast ) {
   ham.addRead8( 1 );
   ham.addRead8( 2 );
   ham.execute();
   ham.prepare();
   EXPECT_EQ( ham.request_.request_size(), 0 );
   EXPECT_EQ( ham.response_.response_size(), 0 );
   EXPECT_EQ( ham.addRead8( 3 ), 0u );
}

TEST_F( OrbisSmbusHamTest, AReusedRequestElementHasNoOldValues ) {
   ham.addWrite8( 1, 0x55, true );
   sent();
   ham.addRead8( 2 );
   ham.execute();
   EXPECT_FALSE( FakeServer::received.back().request( 0 ).has_data() );
   EXPECT_FALSE( FakeServer::received.back().request( 0 ).pec() );
}

} // namespace
