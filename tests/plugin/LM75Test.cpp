#include "OrbisGeneric/Drivers/LM75.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "support/PluginFixture.h"
#include "support/ScriptedHam.h"

namespace {

using Drivers::LM75;

class LM75Test : public PluginFixture {
 protected:
   LM75Test() { lm75.ham_ = &ham; }

   ScriptedHam ham;
   LM75 lm75;
   float celsius = 21.0f;
};

TEST_F( LM75Test, ReadsTheTemperatureRegister ) {
   ham.expectBatch( { read16( 0x00 ).answers( { 0x19, 0x80 } ) } );
   ASSERT_EQ( lm75.getTemperature( &celsius ), PL_STATUS_OK );
   EXPECT_EQ( celsius, 25.5f );
   EXPECT_TRUE( TestHost::tracedAt( 6 ).at( 0 ).starts_with( // the compiler makes this text
      "pl_status Drivers::LM75::getTemperature(float" ) );
}

TEST_F( LM75Test, ReadsHalfDegreesBelowZeroAwayFromZero ) {
   ham.expectBatch( { read16( 0x00 ).answers( { 0xE7, 0x80 } ) } );
   ASSERT_EQ( lm75.getTemperature( &celsius ), PL_STATUS_OK );
   EXPECT_EQ( celsius, -25.5f );
}

TEST_F( LM75Test, PassesABusFailureUpAndLeavesTheReadingAlone ) {
   ham.expectBatch( { read16( 0x00 ).fails( 6 ) } );
   EXPECT_EQ( lm75.getTemperature( &celsius ), 6 );
   EXPECT_EQ( celsius, 21.0f );
   ham.expectBatch( { read16( 0x02 ).fails( 4 ) } );
   EXPECT_EQ( lm75.getThreshold( LM75::Threshold::Alert, &celsius ), 4 );
   EXPECT_EQ( celsius, 21.0f );
}

TEST_F( LM75Test, ReadsItsThresholdsBack ) {
   ham.expectBatch( { read16( 0x02 ).answers( { 0x4B, 0x00 } ) } );
   ASSERT_EQ( lm75.getThreshold( LM75::Threshold::Alert, &celsius ), PL_STATUS_OK );
   EXPECT_TRUE(
      TestHost::tracedAt( 6 ).at( 0 ).starts_with( "pl_status Drivers::LM75::getThreshold(" ) );
   EXPECT_EQ( celsius, 75.0f );
   ham.expectBatch( { read16( 0x03 ).answers( { 0x50, 0x80 } ) } );
   ASSERT_EQ( lm75.getThreshold( LM75::Threshold::Overheat, &celsius ), PL_STATUS_OK );
   EXPECT_EQ( celsius, 80.5f );
}

TEST_F( LM75Test, WritesTheOverheatThresholdDegreesFirst ) {
   ham.expectBatch( { write16( 0x03 ).carries( { 0x19, 0x80 } ) } );
   EXPECT_EQ( lm75.setThreshold( LM75::Threshold::Overheat, 25.5f ), PL_STATUS_OK );
   ham.expectBatch( { write16( 0x02 ).carries( { 0x3C, 0x00 } ).fails( 6 ) } );
   EXPECT_EQ( lm75.setThreshold( LM75::Threshold::Alert, 60.0f ), 6 );
}

struct Reading {
   uint16_t word;
   float celsius;
};

TEST( LM75RegisterTest, DegreesAreSignedAndTheHalfIsAddedToTheMagnitude ) {
   for ( const Reading &r : { Reading{ 0x0019, 25.0f },
                              { 0x8019, 25.5f },
                              { 0x00E7, -25.0f },
                              { 0x80E7, -25.5f },
                              { 0x0000, 0.0f },
                              { 0x8000, 0.5f },
                              { 0x0001, 1.0f },
                              { 0x00FF, -1.0f },
                              { 0x80FF, -1.5f },
                              { 0x007F, 127.0f },
                              { 0x807F, 127.5f },
                              { 0x0080, -128.0f },
                              { 0x7F19, 25.0f } } ) // only the top bit of the second byte counts
      EXPECT_EQ( LM75::registerToTemperature( r.word ), r.celsius ) << std::hex << r.word;
}

TEST( LM75RegisterTest, AThresholdFractionOfThreeQuartersOrMoreIsDropped ) {
   for ( const Reading &r : { Reading{ 0x8019, 25.5f },
                              { 0x0019, 25.0f },
                              { 0x0019, 25.2f },
                              { 0x0019, 25.24f },
                              { 0x8019, 25.25f },
                              { 0x8019, 25.74f },
                              { 0x0019, 25.75f },
                              { 0x0019, 25.8f },
                              { 0x0000, 0.0f },
                              { 0x8000, 0.5f },
                              { 0x007F, 127.0f } } )
      EXPECT_EQ( LM75::temperatureToRegister( r.celsius ), r.word ) << r.celsius;
}

TEST( LM75RegisterTest, BelowZeroTheHalfDegreeBitIsAlwaysSet ) {
   EXPECT_EQ( LM75::temperatureToRegister( -25.5f ), 0xFFE7 );
   EXPECT_EQ( LM75::temperatureToRegister( -25.0f ), 0xFFE7 );
   EXPECT_EQ( LM75::temperatureToRegister( -0.5f ),
              0x8000 ); // no whole degree, so the sign is lost
}

TEST( LM75RegisterTest, ADegreeAboveTheRangeBecomesOneBelowZero ) {
   EXPECT_EQ( LM75::temperatureToRegister( 200.0f ), 0xFFC8 );
}

// No integer can hold these. Their low byte is 0.
TEST( LM75RegisterTest, AThresholdFarOutsideTheRangeIsWrittenAsZero ) {
   const float infinity = std::numeric_limits<float>::infinity();
   for ( float celsius : { 3e9f, 1e10f, -1e10f, 1e38f, -1e38f, infinity, -infinity, NAN } )
      EXPECT_EQ( LM75::temperatureToRegister( celsius ), 0x0000 ) << celsius;
}

TEST_F( LM75Test, ASensorSetsBothThresholdsWhenItIsAdded ) {
   LM75::TempSensor sensor( &lm75 );
   EXPECT_EQ( sensor.alertThreshold, 0.0f );
   ham.expectBatch( { write16( 0x02 ).carries( { 0x3C, 0x00 } ) } );
   sensor.alertThresholdIs( 60.0f );
   EXPECT_EQ( sensor.alertThreshold, 60.0f );
   ham.expectBatch( { write16( 0x03 ).carries( { 0x46, 0x80 } ) } );
   sensor.criticalThresholdIs( 70.5f );
   EXPECT_EQ( sensor.criticalThreshold, 70.5f );
}

TEST_F( LM75Test, AThresholdThatCantBeWrittenStopsTheProcess ) {
   LM75::TempSensor sensor( &lm75 );
   EXPECT_DEATH(
      {
         ham.expectBatch( { write16( 0x02 ).carries( { 0x3C, 0x00 } ).fails( 6 ) } );
         sensor.alertThresholdIs( 60.0f );
      },
      ::testing::AllOf( ::testing::HasSubstr( "OrbisGeneric/Drivers/LM75.cpp" ),
                        ::testing::HasSubstr( "Assertion `device_->setThreshold( "
                                              "Threshold::Alert, value ) == PL_STATUS_OK' "
                                              "failed" ) ) );
}

TEST_F( LM75Test, AnOverheatThresholdThatCantBeWrittenStopsTheProcess ) {
   LM75::TempSensor sensor( &lm75 );
   EXPECT_DEATH(
      {
         ham.expectBatch( { write16( 0x03 ).carries( { 0x3C, 0x00 } ).fails( 4 ) } );
         sensor.criticalThresholdIs( 60.0f );
      },
      ::testing::HasSubstr( "Assertion `device_->setThreshold( Threshold::Overheat, value ) == "
                            "PL_STATUS_OK' failed" ) );
}

TEST_F( LM75Test, AHostReadsTheSensorThroughTheSharedTable ) {
   LM75::TempSensor sensor( &lm75 );
   EXPECT_EQ( sensor.record_.ops, &Component::LogicalDevice::TempSensor::ops_ );
   ham.expectBatch( { read16( 0x00 ).answers( { 0xFD, 0x00 } ) } );
   EXPECT_EQ( sensor.record_.ops->get_temperature( &sensor.record_, &celsius ), PL_STATUS_OK );
   EXPECT_EQ( celsius, -3.0f );
}

TEST_F( LM75Test, ADocumentAndTwoThresholdsMakeASensorOnTheBus ) {
   connect( i2cTopology( "{'did':10}" ) );
   pl_temp_sensor *sensor = pl_temp_sensor_add(
      json( "{'did':10,'driver':'LM75','address':{'address':72}}" ), 60.0f, 75.5f );
   ASSERT_NE( sensor, nullptr );
   ASSERT_EQ( FakeServer::received.size(), 2u );
   const std::string path = " bus 0 accel 0 size 1 master 1 pci 0 len 2 data ";
   EXPECT_EQ( FakeServer::inWords( FakeServer::received[0].request( 0 ) ),
              "write 0x48 reg 0x2" + path + "3c 00" );
   EXPECT_EQ( FakeServer::inWords( FakeServer::received[1].request( 0 ) ),
              "write 0x48 reg 0x3" + path + "4b 80" );
   EXPECT_TRUE( TestHost::traced( 5, "Creating LM75" ) );
}

} // namespace
