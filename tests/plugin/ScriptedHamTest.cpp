// ScriptedHam fails a test for every transfer that differs from the expected one.
#include "support/ScriptedHam.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

namespace {

ScriptedHam *ham; // EXPECT_NONFATAL_FAILURE can't use local variables

class ScriptedHamTest : public ::testing::Test {
 protected:
   ScriptedHamTest() { ham = new ScriptedHam; }
   ~ScriptedHamTest() override { delete ham; }

   uint8_t byte = 0x5A;
};

TEST_F( ScriptedHamTest, AnswersAsScripted ) {
   ham->expectBatch( { read16( 0x12 ).answers( { 0x34, 0x56 } ), write8( 0x13, 7 ) } );
   ham->prepare();
   const auto id = ham->addRead16( 0x12 );
   ham->addWrite8( 0x13, 7, false );
   EXPECT_EQ( ham->execute(), PL_STATUS_OK );
   EXPECT_EQ( ham->get16( id ), 0x5634 );
}

TEST_F( ScriptedHamTest, FailsTheBatchWithTheStatusOfItsFailingTransfer ) {
   ham->expectBatch( { read8( 0x12 ).fails( 6 ) } );
   EXPECT_EQ( ham->read8( 0x12, &byte ), 6 );
   EXPECT_EQ( byte, 0x5A );
}

TEST_F( ScriptedHamTest, ReportsAWrongRegister ) {
   ham->expectBatch( { read8( 0x12 ).answers( { 0 } ) } );
   EXPECT_NONFATAL_FAILURE( ham->read8( 0x13, &byte ), "batch 1, transfer 1: wanted read8( 0x12 ) "
                                                       "of 1, got read8( 0x13 ) of 1" );
}

TEST_F( ScriptedHamTest, ReportsAWrongKindOfTransfer ) {
   ham->expectBatch( { recvByte().answers( { 0 } ) } );
   EXPECT_NONFATAL_FAILURE( ham->read8( 0, &byte ), "wanted recvByte( 0x00 )" );
}

TEST_F( ScriptedHamTest, ReportsWrongBytes ) {
   ham->expectBatch( { write16( 3 ).carries( { 0x19, 0x80 } ) } );
   EXPECT_NONFATAL_FAILURE( ham->write16( 3, 0x1980, false ), "carrying 0x19 0x80, got" );
}

TEST_F( ScriptedHamTest, ReportsUnexpectedPacketErrorChecking ) {
   ham->expectBatch( { write8( 3, 1 ) } );
   EXPECT_NONFATAL_FAILURE( ham->write8( 3, 1, true ), "with PEC" );
}

TEST_F( ScriptedHamTest, ReportsAMissingTransfer ) {
   ham->expectBatch( { read8( 1 ).answers( { 0 } ), read8( 2 ).answers( { 0 } ) } );
   EXPECT_NONFATAL_FAILURE( ham->read8( 1, &byte ), "transfer 2: wanted read8( 0x02 ) of 1, got "
                                                    "nothing" );
}

TEST_F( ScriptedHamTest, ReportsAMissingBatch ) {
   ham->expectBatch( { read8( 1 ).answers( { 0 } ) } );
   EXPECT_NONFATAL_FAILURE( ham->verify(), "never came: read8( 0x01 )" );
}

TEST_F( ScriptedHamTest, ReportsAnUnexpectedBatch ) {
   EXPECT_NONFATAL_FAILURE( ham->read8( 1, &byte ), "batch 1 came unasked: read8( 0x01 )" );
}

TEST_F( ScriptedHamTest, ReportsAFetchOfTheWrongSize ) {
   ham->expectBatch( { read8( 1 ).answers( { 1, 2 } ) } );
   EXPECT_NONFATAL_FAILURE( ham->read8( 1, &byte ), "1 bytes fetched of an answer of 2" );
}

} // namespace
