#include "Images.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace OpticsTest {

namespace {

using namespace Optics;
using enum Quantity;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

void giveExternalCalibration( Bytes &file ) { file[92] = 0x58; }

TEST( Sff8472CalibrationTest, AppliesExternalCalibrationToTheMonitors ) {
   Bytes file = sfp();
   giveExternalCalibration( file );
   put( file, a2 + 56, Bytes( 40, 0 ) );
   put( file, a2 + 68, { 0x3F, 0x00, 0x00, 0x00, 0x41, 0x20, 0x00, 0x00 } ); // 0.5, 10
   put( file, a2 + 76, { 0x01, 0x80, 0xFF, 0xF6 } );                         // 1.5, -10
   put( file, a2 + 80, { 0x00, 0x80, 0x00, 0x05 } );                         // 0.5, 5
   put( file, a2 + 84, { 0x01, 0x80, 0x01, 0x00 } );                         // 1.5, 256
   put( file, a2 + 88, { 0x01, 0x00, 0xFF, 0x9C } );                         // 1, -100
   put( file, a2 + 96, { 0x10, 0x00, 0x80, 0xE8, 0x0D, 0xAC, 0x13, 0x88, 0x07, 0xD0 } );
   const Module module = decoded( file );
   EXPECT_TRUE( module.isExternallyCalibrated );
   EXPECT_EQ( valueOf( module, Temperature ), 25.0 );
   EXPECT_EQ( valueOf( module, SupplyVoltage ), 3.29 );
   EXPECT_EQ( valueOf( module, TxBias, 1 ), 10.48 );
   EXPECT_EQ( valueOf( module, TxPower, 1 ), 0.2505 );
   EXPECT_EQ( valueOf( module, RxPower, 1 ), 0.101 ); // 2000 * 0.5 + 10
   EXPECT_THAT( module.findings, IsEmpty() );
}

TEST( Sff8472CalibrationTest, CalibratesTemperaturesBelowZeroAsSigned ) {
   Bytes file = sfp();
   giveExternalCalibration( file );
   put( file, a2 + 84, { 0x02, 0x00, 0xFF, 0x00 } ); // 2, -256
   put( file, a2 + 96, { 0xFE, 0x00 } );             // -512
   EXPECT_EQ( valueOf( decoded( file ), Temperature ), -5.0 );
}

TEST( Sff8472CalibrationTest, RaisesTheWordToThePowersOfThePolynomial ) {
   Bytes file = sfp();
   giveExternalCalibration( file );
   put( file, a2 + 56, Bytes( 20, 0 ) );
   put( file, a2 + 64, { 0x3F, 0x80, 0x00, 0x00 } ); // of the second power: 1
   put( file, a2 + 104, { 0x00, 0x64 } );            // 100 * 100
   EXPECT_EQ( valueOf( decoded( file ), RxPower, 1 ), 1.0 );
   put( file, a2 + 56, { 0x3F, 0x80, 0x00, 0x00 } ); // of the fourth
   put( file, a2 + 60, { 0xBF, 0x80, 0x00, 0x00 } ); // of the third: -1
   put( file, a2 + 104, { 0x00, 0x05 } );            // 625 - 125 + 25
   EXPECT_EQ( valueOf( decoded( file ), RxPower, 1 ), 0.0525 );
}

TEST( Sff8472CalibrationTest, CalibratesThresholdsToo ) {
   Bytes file = sfp();
   giveExternalCalibration( file );
   put( file, a2 + 84, { 0x01, 0x00, 0x01, 0x00 } ); // one degree more
   put( file, a2 + 68, { 0x3F, 0x00, 0x00, 0x00 } ); // half
   const Module module = decoded( file );
   EXPECT_EQ( monitorOf( module, Temperature )->thresholds, ( Thresholds{ 76, -4, 71, 1 } ) );
   EXPECT_EQ( monitorOf( module, RxPower, 1 )->thresholds,
              ( Thresholds{ 0.6295, 0.005, 0.50005, 0.0079 } ) );
}

TEST( Sff8472CalibrationTest, LeavesTheConstantsAloneWithInternalCalibration ) {
   Bytes file = sfp();
   put( file, a2 + 56, Bytes( 36, 0x55 ) );
   EXPECT_EQ( valueOf( decoded( file ), Temperature ), 25.5 );
   EXPECT_EQ( valueOf( decoded( file ), RxPower, 1 ), 0.4 );
}

TEST( Sff8472CalibrationTest, HasNoPowerBelowZero ) {
   Bytes file = sfp();
   giveExternalCalibration( file );
   put( file, a2 + 82, { 0xFF, 0xFE } ); // -2 counts
   put( file, a2 + 102, { 0x00, 0x01 } );
   EXPECT_EQ( valueOf( decoded( file ), TxPower, 1 ), 0.0 );
}

TEST( Sff8472CalibrationTest, TakesAPowerFarBelowZeroForAWrongCalibration ) {
   Bytes file = sfp();
   giveExternalCalibration( file );
   put( file, a2 + 68, { 0xBF, 0x80, 0x00, 0x00, 0x45, 0x7A, 0x00, 0x00 } ); // -1, 4000
   put( file, a2 + 104, { 0x17, 0x70 } );                                    // 6000
   put( file, a2 + 32, { 0x0F, 0x00, 0x0E, 0x00, 0x0D, 0x00, 0x0C, 0x00 } );
   EXPECT_EQ( valueOf( decoded( file ), RxPower, 1 ), 0.0 ); // -2000
   put( file, a2 + 104, { 0x27, 0x10 } );                    // 10000
   EXPECT_EQ( valueOf( decoded( file ), RxPower, 1 ), std::nullopt );
   EXPECT_THAT( decoded( file ).findings, ElementsAre( HasSubstr( "the rx power out of" ) ) );
}

TEST( Sff8472CalibrationTest, SaysThatACalibrationLeavesTheRangeForAllWords ) {
   Bytes file = sfp();
   giveExternalCalibration( file );
   put( file, a2 + 76, { 0xFF, 0x00, 0x80, 0x00 } ); // the bias: 255, -32768
   EXPECT_EQ( valueOf( decoded( file ), TxBias, 1 ), std::nullopt );
   EXPECT_THAT( decoded( file ).findings, ElementsAre( HasSubstr( "the tx bias out of" ) ) );
}

TEST( Sff8472CalibrationTest, SaysWhichConstantsMakeNoNumber ) {
   Bytes file = sfp();
   giveExternalCalibration( file );
   put( file, a2 + 60, { 0x7F, 0xC0, 0x00, 0x00 } ); // NaN
   put( file, a2 + 76, { 0x00, 0x00 } );
   const Module module = decoded( file );
   EXPECT_EQ( valueOf( module, RxPower, 1 ), std::nullopt );
   EXPECT_EQ( monitorOf( module, RxPower, 1 )->thresholds, Thresholds{} );
   EXPECT_EQ( valueOf( module, TxBias, 1 ), std::nullopt );
   EXPECT_EQ( valueOf( module, TxPower, 1 ), 0.5 );
   EXPECT_THAT(
      module.findings,
      ElementsAre( "the tx bias can't be calibrated: its slope, A2h bytes 76 and 77, is 0",
                   "the rx power can't be calibrated: of its constants, A2h bytes 56 to 75, one is "
                   "no number" ) );
}

TEST( Sff8472CalibrationTest, SaysThatAllConstantsOfTheRxPowerAreZero ) {
   Bytes file = sfp();
   giveExternalCalibration( file );
   put( file, a2 + 56, Bytes( 20, 0 ) );
   const Module module = decoded( file );
   EXPECT_EQ( valueOf( module, RxPower, 1 ), std::nullopt );
   EXPECT_THAT( module.findings, ElementsAre( HasSubstr( "are 0" ) ) );
}

TEST( Sff8472CalibrationTest, SaysThatACalibrationLeavesTheRange ) {
   Bytes file = sfp();
   giveExternalCalibration( file );
   put( file, a2 + 68, { 0x7F, 0x00, 0x00, 0x00 } ); // 1.7e38
   const Module module = decoded( file );
   EXPECT_EQ( valueOf( module, RxPower, 1 ), std::nullopt );
   EXPECT_THAT(
      module.findings,
      ElementsAre( "the calibration takes the rx power out of the range that a module can "
                   "measure: its constants may be wrong" ) );
}

TEST( Sff8472CalibrationTest, SaysThatACalibrationTakesOneThresholdOutOfTheRange ) {
   Bytes file = sfp();
   giveExternalCalibration( file );
   put( file, a2 + 8, { 0xFF, 0xFF } ); // of the voltage, never
   put( file, a2 + 90, { 0x00, 0x01 } );
   const Module module = decoded( file );
   EXPECT_EQ( monitorOf( module, SupplyVoltage )->thresholds.highAlarm, std::nullopt );
   EXPECT_EQ( monitorOf( module, SupplyVoltage )->thresholds.lowAlarm, 2.9701 );
   EXPECT_THAT( module.findings,
                ElementsAre( HasSubstr( "the supply voltage out of the range" ) ) );
}

TEST( Sff8472CalibrationTest, SaysThatItDoesNotKnowWhichCalibrationHolds ) {
   for ( const auto &[type, word] : { std::pair( 0x48, "neither" ), std::pair( 0x78, "both" ) } ) {
      Bytes file = sfp();
      file[92] = static_cast<uint8_t>( type );
      const Module module = decoded( file );
      EXPECT_FALSE( module.isExternallyCalibrated );
      EXPECT_THAT( module.findings, ElementsAre( HasSubstr( word ) ) );
   }
}

} // namespace

} // namespace OpticsTest
