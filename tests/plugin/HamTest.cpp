// The base class of access methods: batches of one transfer, and unsupported operations.
#include "OrbisGeneric/Ham/Ham.h"
#include "support/MessageOf.h"
#include "support/ScriptedHam.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace {

class HamTest : public ::testing::Test {
 protected:
   ScriptedHam ham;
   uint8_t byte = 0x5A;
   uint16_t word = 0x5A5A;
   std::string block = "before";
   const uint8_t data[3] = { 1, 2, 3 };
};

TEST_F( HamTest, EachCallIsABatchOfOne ) {
   ham.expectBatch( { recvByte().answers( { 0x11 } ) } );
   EXPECT_EQ( ham.Ham::recvByte( &byte ), PL_STATUS_OK );
   EXPECT_EQ( byte, 0x11 );
   ham.expectBatch( { read8( 0x20 ).answers( { 0x22 } ) } );
   EXPECT_EQ( ham.Ham::read8( 0x20, &byte ), PL_STATUS_OK );
   EXPECT_EQ( byte, 0x22 );
   ham.expectBatch( { read16( 0x21 ).answers( { 0x34, 0x12 } ) } );
   EXPECT_EQ( ham.Ham::read16( 0x21, &word ), PL_STATUS_OK );
   EXPECT_EQ( word, 0x1234 );
   ham.expectBatch( { read( 0x22, 2 ).answers( { 'h', 'i' } ) } );
   EXPECT_EQ( ham.Ham::read( 0x22, 2, &block ), PL_STATUS_OK );
   EXPECT_EQ( block, "hi" );
   ham.expectBatch( { readBlock( 0x23 ).answers( { 'y', 'o', 'u' } ) } );
   EXPECT_EQ( ham.Ham::readBlock( 0x23, &block ), PL_STATUS_OK );
   EXPECT_EQ( block, "you" );
   ham.expectBatch( { processCall( 0x24 ).carries( { 2, 1 } ).answers( { 4, 3 } ) } );
   EXPECT_EQ( ham.Ham::processCall( 0x24, 0x0102, &word ), PL_STATUS_OK );
   EXPECT_EQ( word, 0x0304 );
   ham.expectBatch( { sendByte( 0x25 ).withPec() } );
   EXPECT_EQ( ham.Ham::sendByte( 0x25, true ), PL_STATUS_OK );
   ham.expectBatch( { write8( 0x26, 9 ) } );
   EXPECT_EQ( ham.Ham::write8( 0x26, 9, false ), PL_STATUS_OK );
   ham.expectBatch( { write16( 0x27 ).carries( { 0x34, 0x12 } ).withPec() } );
   EXPECT_EQ( ham.Ham::write16( 0x27, 0x1234, true ), PL_STATUS_OK );
   ham.expectBatch( { write( 0x28 ).carries( { 1, 2, 3 } ) } );
   EXPECT_EQ( ham.Ham::write( 0x28, data, 3, false ), PL_STATUS_OK );
   ham.expectBatch( { writeBlock( 0x29 ).carries( { 1, 2 } ).withPec() } );
   EXPECT_EQ( ham.Ham::writeBlock( 0x29, data, 2, true ), PL_STATUS_OK );
}

TEST_F( HamTest, AFailedBatchReturnsItsStatusAndKeepsTheOutput ) {
   ham.expectBatch( { recvByte().fails( 6 ) } );
   EXPECT_EQ( ham.Ham::recvByte( &byte ), 6 );
   ham.expectBatch( { read8( 1 ).fails( 6 ) } );
   EXPECT_EQ( ham.Ham::read8( 1, &byte ), 6 );
   ham.expectBatch( { read16( 1 ).fails( 4 ) } );
   EXPECT_EQ( ham.Ham::read16( 1, &word ), 4 );
   ham.expectBatch( { read( 1, 3 ).fails( 4 ) } );
   EXPECT_EQ( ham.Ham::read( 1, 3, &block ), 4 );
   ham.expectBatch( { readBlock( 1 ).fails( 6 ) } );
   EXPECT_EQ( ham.Ham::readBlock( 1, &block ), 6 );
   ham.expectBatch( { processCall( 1 ).carries( { 0, 0 } ).fails( 6 ) } );
   EXPECT_EQ( ham.Ham::processCall( 1, 0, &word ), 6 );
   ham.expectBatch( { write8( 1, 2 ).fails( 6 ) } );
   EXPECT_EQ( ham.Ham::write8( 1, 2, false ), 6 );
   EXPECT_EQ( byte, 0x5A );
   EXPECT_EQ( word, 0x5A5A );
   EXPECT_EQ( block, "before" );
}

// Supports no operation. Counts the calls of prepare and execute.
class BareHam : public Ham::Ham {
 public:
   virtual ~BareHam() = default;
   void prepare() override { ++prepared; }
   pl_status execute() override {
      ++executed;
      return status;
   }
   int prepared = 0, executed = 0;
   pl_status status = PL_STATUS_OK;
};

TEST( BareHamTest, AnUnsupportedOperationThrowsAfterPrepareAndBeforeAnyTransfer ) {
   BareHam ham;
   uint32_t value = 7;
   try {
      ham.read32( 0, &value );
      FAIL() << "nothing thrown";
   } catch ( const std::exception &e ) {
      EXPECT_STREQ( e.what(), "Not implemented addRead32" );
   }
   EXPECT_EQ( ham.prepared, 1 );
   EXPECT_EQ( ham.executed, 0 );
   EXPECT_EQ( value, 7u );
}

TEST( BareHamTest, EveryUnsupportedOperationIsNamed ) {
   BareHam ham;
   const std::vector<std::pair<std::string, std::string>> said = {
      { "addRecvByte", messageOf( [&] { ham.addRecvByte(); } ) },
      { "addRead8", messageOf( [&] { ham.addRead8( 0 ); } ) },
      { "addRead16", messageOf( [&] { ham.addRead16( 0 ); } ) },
      { "addRead32", messageOf( [&] { ham.addRead32( 0 ); } ) },
      { "addRead", messageOf( [&] { ham.addRead( 0, 1 ); } ) },
      { "addReadBlock", messageOf( [&] { ham.addReadBlock( 0 ); } ) },
      { "addSendByte", messageOf( [&] { ham.addSendByte( 0, false ); } ) },
      { "addWrite8", messageOf( [&] { ham.addWrite8( 0, 0, false ); } ) },
      { "addWrite16", messageOf( [&] { ham.addWrite16( 0, 0, false ); } ) },
      { "addWrite32", messageOf( [&] { ham.write32( 0, 0, false ); } ) },
      { "addWrite", messageOf( [&] { ham.addWrite( 0, "", 0, false ); } ) },
      { "addWriteBlock", messageOf( [&] { ham.addWriteBlock( 0, "", 0, false ); } ) },
      { "addProcessCall", messageOf( [&] { ham.addProcessCall( 0, 0 ); } ) },
      { "get8", messageOf( [&] { ham.get8( 0 ); } ) },
      { "get16", messageOf( [&] { ham.get16( 0 ); } ) },
      { "get32", messageOf( [&] { ham.get32( 0 ); } ) },
      { "getBlock", messageOf( [&] { ham.getBlock( 0, 0 ); } ) },
   };
   for ( const auto &[name, message] : said )
      EXPECT_EQ( message, "Not implemented " + name );
}

// Records the length that getBlock gets.
class LengthHam : public BareHam {
 public:
   ResponseId addRead( unsigned, unsigned ) override { return 0; }
   ResponseId addReadBlock( unsigned ) override { return 0; }
   ResponseId addRead32( unsigned ) override { return 0; }
   uint32_t get32( ResponseId ) override { return 0x12345678; }
   std::string getBlock( ResponseId, unsigned len ) override {
      asked = len;
      return "";
   }
   ResponseId addWrite32( unsigned reg, uint32_t value, bool flag ) override {
      written = fmt::format( "{:#x} {:#x} {}", reg, value, flag );
      return 0;
   }
   unsigned asked = 77;
   std::string written{};
};

TEST( LengthHamTest, TheDeviceGivesTheLengthOfABlockAndTheCallerThatOfARead ) {
   LengthHam ham;
   std::string out;
   ham.readBlock( 1, &out );
   EXPECT_EQ( ham.asked, 0u );
   ham.read( 1, 5, &out );
   EXPECT_EQ( ham.asked, 5u );
}

TEST( LengthHamTest, AMethodThatSupports32BitsIsUsed ) {
   LengthHam ham;
   uint32_t value = 0;
   EXPECT_EQ( ham.read32( 1, &value ), PL_STATUS_OK );
   EXPECT_EQ( value, 0x12345678u );
   EXPECT_EQ( ham.write32( 0x10, 0x87654321, true ), PL_STATUS_OK );
   EXPECT_EQ( ham.written, "0x10 0x87654321 true" );
   ham.status = PL_STATUS_TRANSACTION;
   value = 7;
   EXPECT_EQ( ham.read32( 1, &value ), 6 );
   EXPECT_EQ( value, 7u );
   EXPECT_EQ( ham.write32( 0x11, 1, false ), 6 );
   EXPECT_EQ( ham.written, "0x11 0x1 false" );
}

TEST( BareHamTest, ASetRetryCountIsMarkedAsSet ) {
   BareHam ham;
   EXPECT_FALSE( ham.retryCountSet );
   ham.retryCountIs( 3 );
   EXPECT_TRUE( ham.retryCountSet );
   EXPECT_EQ( ham.retryCount, 3u );
}

} // namespace
