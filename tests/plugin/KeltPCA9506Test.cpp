// The expander of the fan board: set-up, power off, and the slots of the fan modules.
#include "support/KeltPCA9506Fixture.h"
#include "support/Layout.h"

REVEAL( IndexOfFansBay, Component::LogicalDevice::Slot::index_ );

namespace {

using Drivers::KeltPCA9506;

class KeltPCA9506Test : public KeltPCA9506Fixture {};

TEST_F( KeltPCA9506Test, ItsCreationIsTraced ) {
   delete KeltPCA9506::create( {}, &ham );
   EXPECT_TRUE( TestHost::traced( 0, "Creating Kelt PCA9506 Device" ) );
   EXPECT_FALSE( TestHost::traced( 0, "Error: failed to write PCA9506 pin configuration" ) );
}

TEST_F( KeltPCA9506Test, AConfigurationThatCantBeWrittenIsTraced ) {
   KeltPCA9506 other;
   other.ham_ = &ham;
   ham.expectBatch( { write8( 0x18, 0xFF ), write8( 0x19, 0xFF ), write8( 0x1A, 0x7F ),
                      write8( 0x1B, 0x1B ).fails( 6 ), write8( 0x1C, 0x80 ) } );
   other.init();
   EXPECT_TRUE( TestHost::traced( 0, "Error: failed to write PCA9506 pin configuration" ) );
}

TEST_F( KeltPCA9506Test, PowersOffByTwoPinsInOneTransaction ) {
   ham.expectBatch( { read8( 0x0A ).answers( { 0x01 } ) } );
   ham.expectBatch( { read8( 0x0B ).answers( { 0x40 } ) } );
   ham.expectBatch( { write8( 0x0A, 0x81 ), write8( 0x0B, 0x44 ) } );
   EXPECT_EQ( expander.poweroff(), PL_STATUS_OK );
}

TEST_F( KeltPCA9506Test, AFailedPowerOffReturnsItsStatus ) {
   ham.expectBatch( { read8( 0x0A ).fails( 6 ) } );
   EXPECT_EQ( expander.poweroff(), 6 );
   ham.expectBatch( { read8( 0x0A ).answers( { 0 } ) } );
   ham.expectBatch( { read8( 0x0B ).answers( { 0 } ) } );
   ham.expectBatch( { write8( 0x0A, 0x80 ), write8( 0x0B, 0x04 ).fails( 6 ) } );
   EXPECT_EQ( expander.poweroff(), 6 );
}

TEST_F( KeltPCA9506Test, APowerOffWhoseSecondBankCantBeReadWritesTheFirst ) {
   ham.expectBatch( { read8( 0x0A ).answers( { 0x01 } ) } );
   ham.expectBatch( { read8( 0x0B ).fails( 4 ) } );
   ham.expectBatch( { write8( 0x0A, 0x81 ) } );
   EXPECT_EQ( expander.poweroff(), PL_STATUS_OK );
   EXPECT_EQ( expander.save(), PL_STATUS_OK ); // nothing is left for a later change to write
}

TEST_F( KeltPCA9506Test, TheDescriptionDependsOnTheAirflow ) {
   auto bay = slot();
   expectModule( true );
   EXPECT_EQ( present( *bay ), "FAN-7 frontToBackAirflow 23000" );
   EXPECT_EQ( status, PL_STATUS_OK );
   EXPECT_TRUE( TestHost::traced( 5, "fan 2 fdl: FAN-7 frontToBackAirflow 23000" ) );
   EXPECT_TRUE( TestHost::traced( 5, "Creating new KeltPCA9506 Slot for Fan id 2" ) );
   EXPECT_EQ( ( *bay ).*revealed( IndexOfFansBay() ), 1 ); // zero-based
   expectModule( false );
   EXPECT_EQ( present( *bay ), "FAN-7 backToFrontAirflow 21000" );
}

TEST_F( KeltPCA9506Test, TheSameAirflowUsesTheCachedLine ) {
   auto bay = slot();
   expectModule( true );
   present( *bay );
   char *first = fdl;
   fdl = nullptr;
   expectModule( true );
   EXPECT_EQ( present( *bay ), "FAN-7 frontToBackAirflow 23000" );
   EXPECT_EQ( status, PL_STATUS_OK );
   EXPECT_NE( fdl, first );
   EXPECT_TRUE( TestHost::traced( 5, "Using cached fdl for fan 2" ) );
   free( first );
}

TEST_F( KeltPCA9506Test, ACachedTextThatCantBeCopiedReturns6 ) {
   auto bay = slot();
   expectModule( true );
   present( *bay );
   expectModule( true );
   TestHost::copiesTexts = false;
   EXPECT_EQ( present( *bay ), "" );
   EXPECT_EQ( status, 6 );
   EXPECT_TRUE( TestHost::traced( 0, "Error: KeltPCA9506::FanSlot strdup failed" ) );
   TestHost::copiesTexts = true;
   expectModule( true );
   EXPECT_EQ( present( *bay ), "FAN-7 frontToBackAirflow 23000" );
}

TEST_F( KeltPCA9506Test, ANewTextThatCantBeCopiedReturns6 ) {
   auto bay = slot();
   expectModule( true );
   TestHost::copiesTexts = false;
   EXPECT_EQ( present( *bay ), "" );
   EXPECT_EQ( status, 6 );
   EXPECT_TRUE( TestHost::traced( 0, "Error: KeltPCA9506::FanSlot strdup failed" ) );
   TestHost::copiesTexts = true;
   expectModule( true );
   EXPECT_EQ( present( *bay ), "FAN-7 frontToBackAirflow 23000" );
}

TEST_F( KeltPCA9506Test, APinBeforeTheFirstStopsTheProcess ) {
   slotArguments["presenceBitOffset"] = "-20";
   auto bay = slot();
   EXPECT_DEATH( present( *bay ), "Assertion `(bit <= 7|n <= numBanks)' failed" );
}

TEST_F( KeltPCA9506Test, AnEmptyBayReturns1AndClearsTheCache ) {
   auto bay = slot();
   expectModule( true );
   present( *bay );
   ham.expectBatch( { read8( 0x01 ).answers( { 0x08 } ) } );
   EXPECT_EQ( present( *bay ), "" );
   EXPECT_EQ( status, 1 );
   TestHost::traces.clear();
   expectModule( true );
   present( *bay );
   EXPECT_FALSE( TestHost::traced( 5, "Using cached fdl for fan 2" ) );
}

TEST_F( KeltPCA9506Test, EachPinThatCantBeReadIsTraced ) {
   auto bay = slot();
   ham.expectBatch( { read8( 0x01 ).fails( 6 ) } );
   EXPECT_EQ( present( *bay ), "" );
   EXPECT_EQ( status, 6 );
   EXPECT_TRUE( TestHost::traced( 0, "Error: status 6 reading fan 2 presence bit" ) );
   ham.expectBatch( { read8( 0x01 ).answers( { 0x00 } ) } );
   ham.expectBatch( { read8( 0x02 ).fails( 4 ) } );
   EXPECT_EQ( present( *bay ), "" );
   EXPECT_EQ( status, 4 );
   EXPECT_TRUE( TestHost::traced( 0, "Error: status 4 reading fan 2 F2B bit" ) );
}

TEST_F( KeltPCA9506Test, MissingArgumentsAndIdsOutOfRangeStopTheProcess ) {
   const std::pair<const char *, const char *> rows[] = { { "presenceBitOffset", "offsetIt" },
                                                          { "fanFdl", "fdlIt" },
                                                          { "rpmF2B", "f2bIt" },
                                                          { "rpmB2F", "b2fIt" },
                                                          { "modelName", "modelIt" } };
   for ( const auto &[key, iterator] : rows ) {
      const Arguments all = slotArguments;
      slotArguments.erase( key );
      EXPECT_DEATH( slot(), ::testing::HasSubstr( std::string( "Assertion `" ) + iterator +
                                                  " != slotArgs_.end()' failed" ) );
      slotArguments = all;
   }
   slotArguments.erase( "fanId" );
   EXPECT_DEATH( slot(), ::testing::HasSubstr(
                            R"(args.driverArgs.find( "fanId" ) != args.driverArgs.end())" ) );
   slotArguments["fanId"] = "6";
   EXPECT_DEATH( slot(), "fanId >= 1 && fanId <= 5" );
   EXPECT_DEATH( led( "0" ), "fanId >= 1 && fanId <= 5" );
   Drivers::DriverArgs none;
   EXPECT_DEATH(
      expander.newLed( none ),
      ::testing::HasSubstr( R"(args.driverArgs.find( "id" ) != args.driverArgs.end())" ) );
}

} // namespace
