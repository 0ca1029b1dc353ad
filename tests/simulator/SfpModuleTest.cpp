#include "simulator/chips/modules/SfpModule.h"
#include "ManualClock.h"
#include "ModulePins.h"
#include "simulator/chips/modules/ModuleKeys.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>

namespace SimulatorTest {

namespace {

using namespace Simulator;
using namespace std::chrono_literals;
using Calibration = SfpCalibration::Kind;

constexpr uint8_t a2 = 0x51;

class SfpModuleTest : public ::testing::Test {
 protected:
   SfpModule make( const char *media, Calibration calibration = Calibration::Internal,
                   uint64_t seed = 5 ) {
      return { "u1",
               clock,
               productOf( sfpProducts(), media ),
               { "Orbis Optics", "SR-10", "A", "S0001", "240229" },
               calibration,
               3,
               seed };
   }
   // The rx power that a host computes of the words of an externally calibrated module.
   double calibratedRxPower( unsigned raw ) {
      const auto coefficient = [&]( unsigned at ) {
         return std::bit_cast<float>( static_cast<uint32_t>( wordOf( external, at, a2 ) ) << 16 |
                                      static_cast<uint32_t>( wordOf( external, at + 2, a2 ) ) );
      };
      double power = 0;
      for ( unsigned at = 56; at <= 72; at += 4 ) // the highest power first
         power = power * raw + coefficient( at );
      return power;
   }
   double calibrated( unsigned slopeAt, double raw ) {
      return wordOf( external, slopeAt, a2 ) / 256.0 * raw +
             static_cast<int16_t>( wordOf( external, slopeAt + 2, a2 ) );
   }

   TestSupport::ManualClock clock;
   SfpModule sr = make( "10GBASE-SR" );
   SfpModule external = make( "10GBASE-LR", Calibration::External );
};

TEST_F( SfpModuleTest, HoldsItsSerialId ) {
   EXPECT_EQ( readFrom( sr, 0, 4 ), ( Bytes{ 0x03, 0x04, 0x07, 0x10 } ) );
   EXPECT_EQ( readFrom( sr, 11, 9 ), ( Bytes{ 0x06, 103, 0, 0, 0, 8, 3, 40, 30 } ) );
   EXPECT_EQ( textOf( sr, 20, 16 ), "Orbis Optics    " );
   EXPECT_EQ( textOf( sr, 40, 16 ), "SR-10           " );
   EXPECT_EQ( textOf( sr, 56, 4 ), "A   " );
   EXPECT_EQ( wordOf( sr, 60 ), 850 );
   EXPECT_EQ( textOf( sr, 68, 16 ), "S0001           " );
   EXPECT_EQ( textOf( sr, 84, 8 ), "240229  " );
   EXPECT_EQ( readFrom( sr, 92, 3 ), ( Bytes{ 0x68, 0xF0, 0x08 } ) );
}

TEST_F( SfpModuleTest, HasRightChecksums ) {
   SfpModule cable = make( "10GBASE-CR" );
   for ( SfpModule *module : { &sr, &external, &cable } ) {
      EXPECT_EQ( byteOf( *module, 63 ), sumOf( *module, 0, 62 ) );
      EXPECT_EQ( byteOf( *module, 95 ), sumOf( *module, 64, 94 ) );
   }
   EXPECT_EQ( byteOf( sr, 95, a2 ), sumOf( sr, 0, 94, a2 ) );
   EXPECT_EQ( byteOf( external, 95, a2 ), sumOf( external, 0, 94, a2 ) );
}

TEST_F( SfpModuleTest, RefusesATextThatIsLongerThanItsField ) {
   const SfpProduct &any = sfpProducts().front();
   EXPECT_THROW( sfpSerialId( any, { "", "", "ABCDE", "", "" }, Calibration::Internal, 1 ),
                 std::length_error );
   EXPECT_NO_THROW( sfpSerialId( any, { "", "", "ABCD", "", "" }, Calibration::Internal, 1 ) );
}

TEST_F( SfpModuleTest, MeasuresWhatIsSet ) {
   set( sr, "ambient", 26.5 ); // its own heat is 9 degrees
   set( sr, "supply", 3.2751 );
   set( sr, "u1.lane1 rxPower", 0.5 );
   EXPECT_EQ( wordOf( sr, 96, a2 ), 0x2380 );
   EXPECT_EQ( wordOf( sr, 98, a2 ), 32751 );
   EXPECT_EQ( wordOf( sr, 104, a2 ), 5000 );
   EXPECT_NEAR( wordOf( sr, 100, a2 ) * 0.002, 6 * ( 1 - 0.006 * 9.5 ), 6 * 0.04 );
   EXPECT_NEAR( wordOf( sr, 102, a2 ), 5600, 5600 * 0.04 );
   set( sr, "ambient", -40 );
   EXPECT_EQ( wordOf( sr, 96, a2 ), 0xE100 ); // -31
}

TEST_F( SfpModuleTest, NeedsMoreCurrentWhenItIsWarm ) {
   set( sr, "ambient", 20 );
   const int cold = wordOf( sr, 100, a2 );
   set( sr, "ambient", 60 );
   EXPECT_GT( wordOf( sr, 100, a2 ), cold * 1.2 );
}

TEST_F( SfpModuleTest, GivesWordsThatItsCalibrationTurnsIntoTheSameUnits ) {
   set( external, "ambient", 30 ); // its own heat is 11 degrees
   set( external, "supply", 3.31 );
   set( external, "u1.lane1 rxPower", 0.4 );
   EXPECT_EQ( byteOf( external, 92 ), 0x58 );
   EXPECT_NE( wordOf( external, 96, a2 ), 41 * 256 );
   EXPECT_NEAR( calibrated( 84, static_cast<int16_t>( wordOf( external, 96, a2 ) ) ), 41 * 256, 1 );
   EXPECT_NEAR( calibrated( 88, wordOf( external, 98, a2 ) ), 33100, 1 );
   EXPECT_NEAR( calibrated( 76, wordOf( external, 100, a2 ) ),
                quantity( external, "u1.lane1 bias" ).get() * 500, 2 );
   EXPECT_NEAR( calibrated( 80, wordOf( external, 102, a2 ) ),
                quantity( external, "u1.lane1 txPower" ).get() * 10000, 1 );
   EXPECT_NEAR( calibratedRxPower( wordOf( external, 104, a2 ) ), 4000, 1 );
   set( external, "ambient", -31 ); // the offset is negative, and so is the raw word
   EXPECT_NEAR( calibrated( 84, static_cast<int16_t>( wordOf( external, 96, a2 ) ) ), -20 * 256,
                1 );
}

TEST_F( SfpModuleTest, HasThresholdsInTheUnitsOfItsMonitors ) {
   EXPECT_EQ( readFrom( sr, 0, 8, a2 ),
              ( Bytes{ 0x4B, 0x00, 0xFB, 0x00, 0x46, 0x00, 0x00, 0x00 } ) );
   EXPECT_EQ( wordOf( sr, 8, a2 ), 36300 );
   EXPECT_EQ( wordOf( sr, 16, a2 ), 5000 );  // 10 mA
   EXPECT_EQ( wordOf( sr, 24, a2 ), 10000 ); // 1 mW
   EXPECT_EQ( wordOf( sr, 34, a2 ), 646 );
   EXPECT_NEAR( calibrated( 84, static_cast<int16_t>( wordOf( external, 2, a2 ) ) ), -5 * 256, 1 );
   EXPECT_NEAR( calibratedRxPower( wordOf( external, 32, a2 ) ), 14100, 1 );
}

TEST_F( SfpModuleTest, HasConstantsThatChangeNothingWhenItCalibratesItself ) {
   Bytes neutral( 36, 0 );
   neutral[12] = 0x3F, neutral[13] = 0x80;                       // 1.0
   neutral[20] = neutral[24] = neutral[28] = neutral[32] = 0x01; // slopes
   EXPECT_EQ( readFrom( sr, 56, 36, a2 ), neutral );
}

TEST_F( SfpModuleTest, ShowsFlagsOnlyWhileTheirReasonIsThere ) {
   EXPECT_EQ( readFrom( sr, 112, 6, a2 ), ( Bytes{ 0, 0, 0, 0, 0, 0 } ) );
   set( sr, "ambient", 62.5 ); // 71.5: a warning
   EXPECT_EQ( readFrom( sr, 112, 6, a2 ), ( Bytes{ 0, 0, 0, 0, 0x80, 0 } ) );
   set( sr, "ambient", 67 ); // 76: an alarm, too
   EXPECT_EQ( byteOf( sr, 112, a2 ), 0x80 );
   set( sr, "ambient", 30 );
   set( sr, "supply", 2.9 );
   EXPECT_EQ( readFrom( sr, 112, 6, a2 ), ( Bytes{ 0x10, 0, 0, 0, 0x10, 0 } ) );
   set( sr, "supply", 3.3 );
   EXPECT_EQ( readFrom( sr, 112, 6, a2 ), ( Bytes{ 0, 0, 0, 0, 0, 0 } ) );
}

TEST_F( SfpModuleTest, RaisesNoFlagAtALimitItself ) {
   set( sr, "supply", 3.465 );
   EXPECT_EQ( byteOf( sr, 116, a2 ), 0x00 );
   set( sr, "supply", 3.4651 );
   EXPECT_EQ( byteOf( sr, 116, a2 ), 0x20 );
}

TEST_F( SfpModuleTest, ShowsADyingLaserByItsCurrentThenByItsPower ) {
   set( sr, "ambient", 36 );
   set( sr, "u1.lane1 age", 40 );
   EXPECT_EQ( byteOf( sr, 116, a2 ), 0x08 );                // bias, high warning
   EXPECT_NEAR( wordOf( sr, 102, a2 ), 5600, 5600 * 0.04 ); // the control holds the power
   set( sr, "u1.lane1 age", 90 );
   EXPECT_EQ( byteOf( sr, 112, a2 ), 0x09 ); // bias high, power low
   EXPECT_LT( wordOf( sr, 102, a2 ), 1480 );
   EXPECT_FALSE( sr.signals().txFault );
   set( sr, "u1.lane1 age", 100 );
   EXPECT_TRUE( sr.signals().txFault );
   EXPECT_EQ( byteOf( sr, 110, a2 ), 0x04 );
}

TEST_F( SfpModuleTest, LosesTheSignalWithoutLight ) {
   EXPECT_FALSE( sr.signals().rxLos );
   set( sr, "u1.lane1 attenuation", 20 );
   EXPECT_TRUE( sr.signals().rxLos );
   EXPECT_EQ( byteOf( sr, 110, a2 ), 0x02 );
   EXPECT_EQ( readFrom( sr, 112, 6, a2 ), ( Bytes{ 0, 0x40, 0, 0, 0, 0x40 } ) );
   set( sr, "u1.lane1 attenuation", 0 );
   EXPECT_FALSE( sr.signals().rxLos );
}

TEST_F( SfpModuleTest, TurnsItsLaserOffByThePinAtOnce ) {
   sr.ordersAre( { .txDisable = true } );
   clock.advance( 10us );
   EXPECT_EQ( readFrom( sr, 100, 4, a2 ), ( Bytes{ 0, 0, 0, 0 } ) );
   EXPECT_EQ( byteOf( sr, 110, a2 ), 0x80 );
   EXPECT_EQ( byteOf( sr, 112, a2 ), 0x00 ); // the words of a laser that is off aren't valid
   sr.ordersAre( {} );
   clock.advance( 1ms );
   EXPECT_EQ( wordOf( sr, 102, a2 ), 0 );
   clock.advance( 1ms );
   EXPECT_GT( wordOf( sr, 102, a2 ), 5000 );
}

TEST_F( SfpModuleTest, TurnsItsLaserOffByTheBitInATenthOfASecond ) {
   EXPECT_EQ( writeTo( sr, 110, { 0x40 }, a2 ), 2 );
   clock.advance( 99ms );
   EXPECT_GT( wordOf( sr, 102, a2 ), 5000 );
   clock.advance( 1ms );
   EXPECT_EQ( wordOf( sr, 102, a2 ), 0 );
   EXPECT_EQ( byteOf( sr, 110, a2 ), 0x40 );
   writeTo( sr, 110, { 0x08 }, a2 ); // the rate selection is kept, and does nothing
   clock.advance( 100ms );
   EXPECT_GT( wordOf( sr, 102, a2 ), 5000 );
   EXPECT_EQ( byteOf( sr, 110, a2 ), 0x08 );
}

TEST_F( SfpModuleTest, IsSilentForAWhileAfterItIsPluggedInThenNotReady ) {
   sr.presentIs( false );
   sr.presentIs( true );
   EXPECT_FALSE( answers( sr ) );
   EXPECT_TRUE( sr.signals().rxLos );
   clock.advance( 299ms );
   EXPECT_FALSE( answers( sr, a2 ) );
   clock.advance( 1ms );
   EXPECT_TRUE( answers( sr ) );
   EXPECT_EQ( byteOf( sr, 110, a2 ), 0x01 );
   EXPECT_EQ( wordOf( sr, 96, a2 ), 0 );
   clock.advance( 700ms );
   EXPECT_EQ( byteOf( sr, 110, a2 ), 0x00 );
   EXPECT_GT( wordOf( sr, 96, a2 ), 0 );
}

TEST_F( SfpModuleTest, WarmsUpAfterItIsPluggedIn ) {
   set( sr, "ambient", 30 );
   sr.presentIs( false );
   sr.presentIs( true );
   clock.advance( 2s );
   EXPECT_NEAR( quantity( sr, "temperature" ).get(), 30.2, 0.2 );
   clock.advance( 88s ); // one time constant
   EXPECT_NEAR( quantity( sr, "temperature" ).get(), 30 + 9 * ( 1 - std::exp( -1 ) ), 0.7 );
   clock.advance( 1h );
   EXPECT_NEAR( quantity( sr, "temperature" ).get(), 39, 0.7 );
}

TEST_F( SfpModuleTest, KeepsEachAddressItsOwnPointer ) {
   readFrom( sr, 19, 1 );
   readFrom( sr, 55, 1, a2 );
   sr.addressedAt( 0x50, Direction::Read );
   EXPECT_EQ( sr.read(), 'O' );
   sr.addressedAt( a2, Direction::Read );
   sr.read();
   EXPECT_EQ( readFrom( sr, 68, 2, a2 ), ( Bytes{ 0x3F, 0x80 } ) );
   sr.addressedAt( 0x50, Direction::Read );
   EXPECT_EQ( sr.read(), 'r' );
}

TEST_F( SfpModuleTest, ReadsAWordOfOneSample ) {
   set( sr, "ambient", 30 );
   sr.addressedAt( a2, Direction::Write );
   sr.command( 96 );
   sr.addressedAt( a2, Direction::Read );
   EXPECT_EQ( sr.read(), 39 );
   sr.model().ambientIs( 50.5 );
   EXPECT_EQ( sr.read(), 0x00 );
   EXPECT_EQ( readFrom( sr, 96, 2, a2 ), ( Bytes{ 59, 0x80 } ) );
}

TEST_F( SfpModuleTest, IgnoresWritesOfWhatIsReadOnly ) {
   const Bytes before = readFrom( sr, 0, 100 );
   EXPECT_EQ( writeTo( sr, 20, { 'X', 'Y' } ), 3 );
   EXPECT_EQ( readFrom( sr, 0, 100 ), before );
   const Bytes diagnostics = readFrom( sr, 0, 120, a2 );
   writeTo( sr, 95, { 1, 2, 3 }, a2 );
   EXPECT_EQ( readFrom( sr, 0, 120, a2 ), diagnostics );
}

TEST_F( SfpModuleTest, KeepsTheUsersMemoryWithoutPower ) {
   writeTo( sr, 128, { 0x12, 0x34 }, a2 );
   sr.poweredIs( false );
   sr.poweredIs( true );
   clock.advance( 1s );
   EXPECT_EQ( readFrom( sr, 128, 2, a2 ), ( Bytes{ 0x12, 0x34 } ) );
}

TEST_F( SfpModuleTest, HasOneAddressWithoutDiagnostics ) {
   SfpModule cable = make( "10GBASE-CR" );
   EXPECT_TRUE( answers( cable ) );
   EXPECT_FALSE( answers( cable, a2 ) );
   EXPECT_EQ( readFrom( cable, 92, 2 ), ( Bytes{ 0, 0 } ) );
   EXPECT_EQ( readFrom( cable, 8, 1 ), Bytes{ 0x04 } );
   EXPECT_EQ( byteOf( cable, 18 ), 3 );
   EXPECT_FALSE( cable.signals().rxLos );
}

TEST_F( SfpModuleTest, DriftsAsItsSeedSays ) {
   SfpModule same = make( "10GBASE-SR" );
   SfpModule other = make( "10GBASE-SR", Calibration::Internal, 6 );
   const auto words = [&]( SfpModule &module ) { return readFrom( module, 96, 10, a2 ); };
   const Bytes atFirst = words( sr );
   EXPECT_EQ( words( same ), atFirst );
   EXPECT_NE( words( other ), atFirst );
   clock.advance( 13s );
   EXPECT_NE( words( sr ), atFirst );
   EXPECT_EQ( words( same ), words( sr ) );
}

} // namespace

} // namespace SimulatorTest
