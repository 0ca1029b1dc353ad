#include "OrbisGeneric/Drivers/EMC2305.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "support/PluginFixture.h"
#include "support/ScriptedHam.h"

namespace {

using Drivers::EMC2305;

class EMC2305Test : public PluginFixture {
 protected:
   EMC2305Test() { driver.ham_ = &ham; }

   static Drivers::DriverArgs fanArgs( const char *fanId, const char *maxRpm,
                                       const char *channel ) {
      Drivers::DriverArgs args;
      args.driverArgs = { { "fanId", fanId }, { "maxRpm", maxRpm }, { "registerOffset", channel } };
      return args;
   }
   // The fan of channel 2, with a tach multiplier of 2.
   std::unique_ptr<Component::LogicalDevice::Fan> channel2( const char *maxRpm = "23000" ) {
      ham.expectBatch( { read8( 0x52 ).answers( { 0x2B } ) } );
      return std::unique_ptr<Component::LogicalDevice::Fan>(
         driver.newFan( fanArgs( "3", maxRpm, "2" ) ) );
   }
   ScriptedHam ham;
   EMC2305 driver;
   int rpm = 77;
};

TEST_F( EMC2305Test, ItsCreationIsTraced ) {
   delete EMC2305::create( {}, &ham );
   EXPECT_TRUE( TestHost::traced( 0, "Creating EMC2305 Device" ) );
}

TEST_F( EMC2305Test, ReadsBothTachBytesInOneBatch ) {
   auto fan = channel2();
   ham.expectBatch( { read8( 0x5F ).answers( { 0xF8 } ), read8( 0x5E ).answers( { 0x0F } ) } );
   EXPECT_EQ( fan->getRpm( &rpm ), PL_STATUS_OK );
   EXPECT_EQ( rpm, 15390 );
   EXPECT_TRUE( TestHost::traced( 5, "Creating new EMC2305 Fan id 3" ) );
   EXPECT_TRUE( TestHost::traced( 5, "Fan 2 tach multipler = 2" ) );
   EXPECT_TRUE( TestHost::traced(
      5, "EMC2305::getFanRpm -- id: 2 tachLow: 248, tachHigh: 15, count: 511 rpm: 15390" ) );
}

TEST_F( EMC2305Test, EveryRangeHasItsMultiplierAndEveryChannelItsRegisters ) {
   struct {
      unsigned channel;
      uint8_t config1;
      int rpm; // for a count of 3932160 / 1024 = 3840: 0x78 high, 0 low
   } const rows[] = { { 0, 0x0B, 1024 }, { 1, 0x2B, 2048 }, { 2, 0x4B, 4096 }, { 4, 0x6B, 8192 } };
   for ( const auto &row : rows ) {
      const unsigned base = 0x10 * row.channel;
      ham.expectBatch( { read8( base + 0x32 ).answers( { row.config1 } ) } );
      std::unique_ptr<Component::LogicalDevice::Fan> fan(
         driver.newFan( fanArgs( "1", "1000", std::to_string( row.channel ).c_str() ) ) );
      ham.expectBatch(
         { read8( base + 0x3F ).answers( { 0x00 } ), read8( base + 0x3E ).answers( { 0x78 } ) } );
      EXPECT_EQ( fan->getRpm( &rpm ), PL_STATUS_OK );
      EXPECT_EQ( rpm, row.rpm );
      ham.expectBatch( { write8( base + 0x30, 255 ) } );
      EXPECT_EQ( fan->setRpm( 1000 ), PL_STATUS_OK );
   }
}

TEST_F( EMC2305Test, AMultiplierThatCantBeReadIsOne ) {
   ham.expectBatch( { read8( 0x32 ).fails( 6 ) } );
   std::unique_ptr<Component::LogicalDevice::Fan> fan(
      driver.newFan( fanArgs( "1", "100", "0" ) ) );
   EXPECT_TRUE( TestHost::traced( 0, "Error reading config1 register for fan 0" ) );
   ham.expectBatch( { read8( 0x3F ).answers( { 0x00 } ), read8( 0x3E ).answers( { 0x78 } ) } );
   EXPECT_EQ( fan->getRpm( &rpm ), PL_STATUS_OK );
   EXPECT_EQ( rpm, 1024 );
}

TEST_F( EMC2305Test, ACountOfZeroIsAFaultWithASpeedOfZero ) {
   auto fan = channel2();
   ham.expectBatch( { read8( 0x5F ).answers( { 0x07 } ), read8( 0x5E ).answers( { 0x00 } ) } );
   EXPECT_EQ( fan->getRpm( &rpm ), 2 );
   EXPECT_EQ( rpm, 0 );
   EXPECT_TRUE( TestHost::traced( 0, "Error: invalid fan count" ) );
}

TEST_F( EMC2305Test, ABusFailureOfEitherTachByteKeepsTheReading ) {
   auto fan = channel2();
   for ( int failing : { 0, 1 } ) {
      std::vector<Transfer> batch = { read8( 0x5F ), read8( 0x5E ) };
      batch[failing] = batch[failing].fails( 6 );
      ham.expectBatch( batch );
      EXPECT_EQ( fan->getRpm( &rpm ), 6 );
      EXPECT_EQ( rpm, 77 );
   }
}

TEST_F( EMC2305Test, WritesAShareOfFullDriveAndWrapsAboveIt ) {
   auto fan = channel2();
   ham.expectBatch( { write8( 0x50, 255 ) } );
   EXPECT_EQ( fan->setRpm( 23000 ), PL_STATUS_OK );
   ham.expectBatch( { write8( 0x50, 254 ) } ); // 510 modulo 256
   EXPECT_EQ( fan->setRpm( 46000 ), PL_STATUS_OK );
   ham.expectBatch( { write8( 0x50, 127 ) } );
   EXPECT_EQ( fan->setRpm( 11500 ), PL_STATUS_OK );
   ham.expectBatch( { write8( 0x50, 0 ) } );
   EXPECT_EQ( fan->setRpm( 0 ), PL_STATUS_OK );
   ham.expectBatch( { write8( 0x50, 0x01 ) } ); // -255
   EXPECT_EQ( fan->setRpm( -23000 ), PL_STATUS_OK );
   EXPECT_TRUE( TestHost::traced( 5, "Setting fan 2 rpm to 46000" ) );
   EXPECT_EQ( TestHost::tracedAt( 0 ), std::vector<std::string>{} );
}

TEST_F( EMC2305Test, AFailedWriteIsTracedWithItsStatus ) {
   auto fan = channel2();
   ham.expectBatch( { write8( 0x50, 255 ).fails( 4 ) } );
   EXPECT_EQ( fan->setRpm( 23000 ), 4 );
   EXPECT_TRUE( TestHost::traced( 0, "Error: setting fan 2 to 23000 rpm failed with status 4" ) );
}

TEST_F( EMC2305Test, MissingOrWrongArgumentsStopTheProcess ) {
   Drivers::DriverArgs args = fanArgs( "1", "100", "0" );
   args.driverArgs.erase( "fanId" );
   const auto missing = ::testing::HasSubstr( "Assertion `it != args.driverArgs.end()' failed" );
   EXPECT_DEATH( driver.newFan( args ), missing );
   args = fanArgs( "1", "100", "0" );
   args.driverArgs.erase( "maxRpm" );
   EXPECT_DEATH( driver.newFan( args ), missing );
   EXPECT_DEATH( driver.newFan( fanArgs( "0", "100", "0" ) ), "fanId >= 1 && fanId <= 5" );
   EXPECT_DEATH( driver.newFan( fanArgs( "6", "100", "0" ) ), "fanId >= 1 && fanId <= 5" );
   args = fanArgs( "1", "100", "0" );
   args.driverArgs.erase( "registerOffset" );
   EXPECT_THROW( driver.newFan( args ), std::invalid_argument );
}

} // namespace
