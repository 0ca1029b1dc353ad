#include "OrbisGeneric/Drivers/GPIOExpander.h"
#include "support/PluginFixture.h"
#include "support/ScriptedHam.h"

namespace {

class GPIOExpanderTest : public PluginFixture {
 protected:
   GPIOExpanderTest() {
      expander.ham_ = &ham;
      expander.init( 3, 2, 0x00, 0x08, 0x18 );
   }
   ScriptedHam ham;
   Drivers::GPIOExpander expander;
   uint8_t byte = 0x5A;
   bool bit = false;
};

TEST_F( GPIOExpanderTest, ReadsAnInputBankOnceInTwoSeconds ) {
   ham.expectBatch( { read8( 0x01 ).answers( { 0x24 } ) } );
   EXPECT_EQ( expander.readBit( 10, &bit ), PL_STATUS_OK );
   EXPECT_TRUE( bit );
   TestHost::now += 2;
   EXPECT_EQ( expander.readBit( 1, 1, &bit ), PL_STATUS_OK ); // not more than two seconds yet
   EXPECT_FALSE( bit );
   TestHost::now += 1;
   ham.expectBatch( { read8( 0x01 ).answers( { 0x02 } ) } );
   EXPECT_EQ( expander.readBit( 1, 1, &bit ), PL_STATUS_OK );
   EXPECT_TRUE( bit );
   EXPECT_TRUE( TestHost::traced( 5, "GPIOExpander::getInBank( 1 ) = 24" ) );
   EXPECT_TRUE( TestHost::traced( 5, "GPIOExpander::readBit( 1, 2 ) = 1" ) );
}

TEST_F( GPIOExpanderTest, BeforeItsFirstReadABankIsZeroWithAnAgeFromTimeZero ) {
   TestHost::now = 2;
   EXPECT_EQ( expander.getInBank( 1, &byte ), PL_STATUS_OK ); // nothing on the bus
   EXPECT_EQ( byte, 0 );
   TestHost::now = 3;
   ham.expectBatch( { read8( 0x01 ).answers( { 0x24 } ) } );
   EXPECT_EQ( expander.getInBank( 1, &byte ), PL_STATUS_OK );
   EXPECT_EQ( byte, 0x24 );
}

TEST_F( GPIOExpanderTest, EachKindOfRegisterHasItsOwnBase ) {
   expander.init( 2, 2, 0x10, 0x20, 0x30 );
   ham.expectBatch( { read8( 0x11 ).answers( { 0x01 } ) } );
   EXPECT_EQ( expander.getInBank( 1, &byte ), PL_STATUS_OK );
   ham.expectBatch( { read8( 0x21 ).answers( { 0x01 } ) } );
   EXPECT_EQ( expander.getOutBank( 1, &byte ), PL_STATUS_OK );
   const uint8_t cfg[] = { 1, 2 };
   ham.expectBatch( { write8( 0x30, 1 ), write8( 0x31, 2 ) } );
   EXPECT_EQ( expander.writeConfig( cfg ), PL_STATUS_OK );
}

TEST_F( GPIOExpanderTest, EveryBankHasItsOwnCache ) {
   ham.expectBatch( { read8( 0x00 ).answers( { 0x11 } ) } );
   EXPECT_EQ( expander.getInBank( 0, &byte ), PL_STATUS_OK );
   ham.expectBatch( { read8( 0x02 ).answers( { 0x22 } ) } );
   EXPECT_EQ( expander.getInBank( 2, &byte ), PL_STATUS_OK );
   EXPECT_EQ( byte, 0x22 );
   EXPECT_EQ( expander.getInBank( 0, &byte ), PL_STATUS_OK );
   EXPECT_EQ( byte, 0x11 );
}

TEST_F( GPIOExpanderTest, AFailedInputReadIsTracedAndRepeated ) {
   ham.expectBatch( { read8( 0x01 ).fails( 6 ) } );
   EXPECT_EQ( expander.readBit( 10, &bit ), 6 );
   EXPECT_TRUE( TestHost::traced( 0, "Error: status 6 while reading input bank 1" ) );
   EXPECT_TRUE( TestHost::traced( 5, "Error 6: GPIOExpander::readBit( 1, 2 )" ) );
   ham.expectBatch( { read8( 0x01 ).answers( { 0x04 } ) } );
   EXPECT_EQ( expander.readBit( 10, &bit ), PL_STATUS_OK );
   EXPECT_TRUE( bit );
}

TEST_F( GPIOExpanderTest, OutputChangesAreCollectedUntilTheyAreSaved ) {
   ham.expectBatch( { read8( 0x08 ).answers( { 0x81 } ) } );
   EXPECT_EQ( expander.writeBit( 3, true ), PL_STATUS_OK );
   EXPECT_EQ( expander.writeBit( 0, 0, false ), PL_STATUS_OK ); // read once
   ham.expectBatch( { read8( 0x0A ).answers( { 0x00 } ) } );
   EXPECT_EQ( expander.writeBit( 23, true ), PL_STATUS_OK );
   ham.expectBatch( { write8( 0x08, 0x88 ), write8( 0x0A, 0x80 ) } );
   EXPECT_EQ( expander.save(), PL_STATUS_OK );
   EXPECT_TRUE( TestHost::traced( 5, " GPIOExpander::save -- writing output bank 2 = 128" ) );
   EXPECT_EQ( expander.save(), PL_STATUS_OK ); // nothing is pending, so nothing is sent
   EXPECT_EQ( TestHost::tracedAt( 0 ), std::vector<std::string>{} );
}

TEST_F( GPIOExpanderTest, ABankWhoseNewValueIsZeroIsNotWrittenAndStaysPending ) {
   ham.expectBatch( { read8( 0x08 ).answers( { 0x01 } ) } );
   EXPECT_EQ( expander.writeBit( 0, false ), PL_STATUS_OK );
   EXPECT_EQ( expander.save(), PL_STATUS_OK );
   EXPECT_EQ( expander.getOutBank( 0, &byte ), PL_STATUS_OK ); // still pending, so no bus read
   EXPECT_EQ( byte, 0x00 );
   EXPECT_EQ( expander.writeBit( 1, true ), PL_STATUS_OK );
   ham.expectBatch( { write8( 0x08, 0x02 ) } );
   EXPECT_EQ( expander.save(), PL_STATUS_OK );
}

TEST_F( GPIOExpanderTest, ABankThatWasOnlyReadIsWrittenBack ) {
   ham.expectBatch( { read8( 0x09 ).answers( { 0x42 } ) } );
   EXPECT_EQ( expander.getOutBank( 1, &byte ), PL_STATUS_OK );
   EXPECT_EQ( byte, 0x42 );
   EXPECT_TRUE( TestHost::traced( 5, "GPIOExpander::getoutBank( 1 ) = 42" ) );
   ham.expectBatch( { write8( 0x09, 0x42 ) } );
   EXPECT_EQ( expander.save(), PL_STATUS_OK );
}

TEST_F( GPIOExpanderTest, AFailedOutputReadLeavesNothingPending ) {
   ham.expectBatch( { read8( 0x08 ).fails( 4 ) } );
   EXPECT_EQ( expander.writeBit( 0, true ), 4 );
   EXPECT_TRUE( TestHost::traced( 0, "Error: status 4 while reading output bank 0" ) );
   EXPECT_EQ( expander.save(), PL_STATUS_OK );
}

TEST_F( GPIOExpanderTest, AFailedSaveIsTraced ) {
   ham.expectBatch( { read8( 0x08 ).answers( { 0 } ) } );
   expander.writeBit( 0, true );
   ham.expectBatch( { write8( 0x08, 0x01 ).fails( 6 ) } );
   EXPECT_EQ( expander.save(), 6 );
   EXPECT_TRUE( TestHost::traced( 0, "Error: status 6 writing to GPIOExpander" ) );
   EXPECT_TRUE( TestHost::traced( 5, "GPIOExpander::save" ) );
}

TEST_F( GPIOExpanderTest, AFailedSaveForgetsWhatWasPending ) {
   ham.expectBatch( { read8( 0x08 ).answers( { 0 } ) } );
   expander.writeBit( 0, true );
   ham.expectBatch( { write8( 0x08, 0x01 ).fails( 6 ) } );
   EXPECT_EQ( expander.save(), 6 );
   EXPECT_EQ( expander.save(), PL_STATUS_OK ); // nothing on the bus
   ham.expectBatch( { read8( 0x08 ).answers( { 0x40 } ) } );
   expander.writeBit( 1, true );
   ham.expectBatch( { write8( 0x08, 0x42 ) } );
   EXPECT_EQ( expander.save(), PL_STATUS_OK );
}

TEST_F( GPIOExpanderTest, ConfiguresEveryBankInOneBatch ) {
   const uint8_t cfg[] = { 0xFF, 0x7F, 0x80 };
   ham.expectBatch( { write8( 0x18, 0xFF ), write8( 0x19, 0x7F ), write8( 0x1A, 0x80 ) } );
   EXPECT_EQ( expander.writeConfig( cfg ), PL_STATUS_OK );
}

TEST_F( GPIOExpanderTest, ANegativeBankBitOrPinStopsTheProcess ) {
   EXPECT_DEATH( expander.getInBank( -1, &byte ), "Assertion `n <= numBanks' failed" );
   EXPECT_DEATH( expander.getOutBank( -1, &byte ), "Assertion `n <= numBanks' failed" );
   EXPECT_DEATH( expander.readBit( 0, -1, &bit ), "Assertion `bit <= 7' failed" );
   EXPECT_DEATH( expander.writeBit( 0, -1, true ), "Assertion `bit <= 7' failed" );
   EXPECT_DEATH( expander.readBit( -1, &bit ), "Assertion `bit <= 7' failed" );
   EXPECT_DEATH( expander.writeBit( -8, true ), "Assertion `n <= numBanks' failed" );
}

TEST_F( GPIOExpanderTest, ABankNumberAboveTheNumberOfBanksStopsTheProcess ) {
   ham.expectBatch( { read8( 0x03 ).answers( { 1 } ) } );
   EXPECT_EQ( expander.getInBank( 3, &byte ), PL_STATUS_OK );
   ham.expectBatch( { read8( 0x0B ).answers( { 1 } ) } );
   EXPECT_EQ( expander.getOutBank( 3, &byte ), PL_STATUS_OK );
   EXPECT_EQ( expander.save(), PL_STATUS_OK ); // this bank number is not a bank that save() writes
   EXPECT_DEATH( expander.getInBank( 4, &byte ), "Assertion `n <= numBanks' failed" );
   EXPECT_DEATH( expander.getOutBank( 4, &byte ), "Assertion `n <= numBanks' failed" );
   EXPECT_DEATH( expander.readBit( 0, 8, &bit ), "Assertion `bit <= 7' failed" );
   EXPECT_DEATH( expander.writeBit( 0, 8, true ), "Assertion `bit <= 7' failed" );
}

} // namespace
