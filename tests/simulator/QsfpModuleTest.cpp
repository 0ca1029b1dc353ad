#include "simulator/chips/modules/QsfpModule.h"
#include "ManualClock.h"
#include "ModulePins.h"
#include "simulator/chips/modules/ModuleKeys.h"

#include <gtest/gtest.h>

namespace SimulatorTest {

namespace {

using namespace Simulator;
using namespace std::chrono_literals;

class QsfpModuleTest : public ::testing::Test {
 protected:
   QsfpModule make( std::string_view media ) {
      return { "u1",
               clock,
               productOf( qsfpProducts(), media ),
               { "Orbis Optics", "SR4-100", "B", "Q0001", "240301" },
               3,
               7 };
   }
   Bytes page( QsfpModule &module, int number, unsigned at, unsigned count ) {
      writeTo( module, 127, { number } );
      return readFrom( module, at, count );
   }
   int thresholdWord( unsigned at ) {
      writeTo( sr4, 127, { 0x03 } );
      return wordOf( sr4, at );
   }
   void plugIn() {
      sr4.presentIs( false );
      sr4.presentIs( true );
   }
   bool interrupts() { return sr4.signals().interrupt; }
   Bytes flags() { return readFrom( sr4, 3, 12 ); }

   const Bytes noFlags = Bytes( 12, 0 );
   TestSupport::ManualClock clock;
   QsfpModule sr4 = make( "100GBASE-SR4" );
   QsfpModule cable = make( "100GBASE-CR4" );
};

TEST_F( QsfpModuleTest, HoldsItsIdentification ) {
   EXPECT_EQ( readFrom( sr4, 0, 3 ), ( Bytes{ 0x11, 0x08, 0x02 } ) );
   EXPECT_EQ( readFrom( sr4, 128, 4 ), ( Bytes{ 0x11, 0x8C, 0x0C, 0x80 } ) );
   EXPECT_EQ( textOf( sr4, 148, 16 ), "Orbis Optics    " );
   EXPECT_EQ( textOf( sr4, 168, 16 ), "SR4-100         " );
   EXPECT_EQ( textOf( sr4, 184, 2 ), "B " );
   EXPECT_EQ( wordOf( sr4, 186 ), 0x4268 ); // 850 nm
   EXPECT_EQ( byteOf( sr4, 192 ), 0x02 );
   EXPECT_EQ( textOf( sr4, 196, 16 ), "Q0001           " );
   EXPECT_EQ( textOf( sr4, 212, 8 ), "240301  " );
}

TEST_F( QsfpModuleTest, HasRightChecksums ) {
   for ( const QsfpProduct &product : qsfpProducts() ) {
      QsfpModule module = make( product.media );
      EXPECT_EQ( byteOf( module, 191 ), sumOf( module, 128, 190 ) ) << product.media;
      EXPECT_EQ( byteOf( module, 223 ), sumOf( module, 192, 222 ) ) << product.media;
   }
}

TEST_F( QsfpModuleTest, RefusesATextThatIsLongerThanItsField ) {
   EXPECT_THROW( qsfpIdentification( qsfpProducts().front(), { "", "", "ABC", "", "" }, 1 ),
                 std::length_error );
}

TEST_F( QsfpModuleTest, ShowsThePageThatIsChosenAndTheLowerPageAlways ) {
   EXPECT_EQ( page( sr4, 0x03, 127, 3 ), ( Bytes{ 0x03, 0x4B, 0x00 } ) ); // 75 degrees
   EXPECT_EQ( byteOf( sr4, 0 ), 0x11 );
   EXPECT_EQ( page( sr4, 0x00, 127, 2 ), ( Bytes{ 0x00, 0x11 } ) );
}

TEST_F( QsfpModuleTest, GoesBackToPage0ForAPageThatItHasNot ) {
   page( sr4, 0x03, 128, 1 );
   for ( const int number : { 0x01, 0x04, 0x10, 0xFF } )
      EXPECT_EQ( page( sr4, number, 127, 2 ), ( Bytes{ 0x00, 0x11 } ) ) << number;
}

TEST_F( QsfpModuleTest, MeasuresEachLane ) {
   set( sr4, "ambient", 30 ); // its own heat is 13 degrees
   set( sr4, "supply", 3.3 );
   for ( unsigned lane = 0; lane < 4; ++lane )
      set( sr4, "u1.lane" + std::to_string( lane + 1 ) + " rxPower", 0.5 + 0.1 * lane );
   EXPECT_EQ( readFrom( sr4, 22, 6 ), ( Bytes{ 43, 0x00, 0, 0, 0x80, 0xE8 } ) );
   EXPECT_EQ( readFrom( sr4, 34, 8 ), ( Bytes{ 0x13, 0x88, 0x17, 0x70, 0x1B, 0x58, 0x1F, 0x40 } ) );
   for ( unsigned lane = 0; lane < 4; ++lane ) {
      EXPECT_NEAR( wordOf( sr4, 42 + 2 * lane ) * 0.002, 7.4, 7.4 * 0.06 );
      EXPECT_NEAR( wordOf( sr4, 50 + 2 * lane ), 9200, 9200 * 0.04 );
   }
   EXPECT_NE( wordOf( sr4, 50 ), wordOf( sr4, 52 ) );
}

TEST_F( QsfpModuleTest, HasThresholdsInTheOrderOfItsPage ) {
   EXPECT_EQ( page( sr4, 0x03, 128, 8 ),
              ( Bytes{ 0x4B, 0x00, 0xFB, 0x00, 0x46, 0x00, 0x00, 0x00 } ) );
   EXPECT_EQ( thresholdWord( 144 ), 36300 );
   EXPECT_EQ( thresholdWord( 178 ), 676 );   // rx power, low alarm
   EXPECT_EQ( thresholdWord( 184 ), 6500 );  // bias, high alarm: 13 mA
   EXPECT_EQ( thresholdWord( 192 ), 21880 ); // tx power, high alarm
}

TEST_F( QsfpModuleTest, KeepsAFlagUntilItIsReadAndSetsItAgainWhileItsReasonIsThere ) {
   set( sr4, "ambient", 59 ); // 72: a warning
   EXPECT_EQ( byteOf( sr4, 6 ), 0x20 );
   EXPECT_EQ( byteOf( sr4, 6 ), 0x20 );
   set( sr4, "ambient", 30 );
   EXPECT_EQ( byteOf( sr4, 6 ), 0x20 );
   EXPECT_EQ( byteOf( sr4, 6 ), 0x00 );
}

TEST_F( QsfpModuleTest, RemembersWhatHappenedBetweenTwoReads ) {
   set( sr4, "supply", 3.7 );
   set( sr4, "supply", 3.3 );
   EXPECT_EQ( byteOf( sr4, 7 ), 0xA0 );
   EXPECT_EQ( flags(), noFlags );
}

TEST_F( QsfpModuleTest, HasTheOddLaneInTheUpperHalfOfAFlagByte ) {
   set( sr4, "u1.lane1 rxPower", 0.09 ); // a warning
   set( sr4, "u1.lane4 rxPower", 2.5 );
   EXPECT_EQ( readFrom( sr4, 9, 2 ), ( Bytes{ 0x10, 0x0A } ) );
   set( sr4, "u1.lane2 age", 40 );
   EXPECT_EQ( readFrom( sr4, 11, 2 ), ( Bytes{ 0x02, 0x00 } ) );
}

TEST_F( QsfpModuleTest, LosesSignalAndLockOfADarkLane ) {
   set( sr4, "u1.lane3 rxPower", 0 );
   EXPECT_EQ( readFrom( sr4, 3, 3 ), ( Bytes{ 0x04, 0x00, 0x04 } ) );
   EXPECT_EQ( readFrom( sr4, 9, 2 ), ( Bytes{ 0x00, 0x50 } ) );
}

TEST_F( QsfpModuleTest, InterruptsWhileAFlagIsSetThatIsNotMasked ) {
   EXPECT_FALSE( interrupts() );
   set( sr4, "supply", 3.7 );
   set( sr4, "supply", 3.3 );
   EXPECT_TRUE( interrupts() );
   EXPECT_EQ( byteOf( sr4, 2 ), 0x00 );
   writeTo( sr4, 104, { 0xF0 } );
   EXPECT_FALSE( interrupts() );
   EXPECT_EQ( byteOf( sr4, 2 ), 0x02 );
   writeTo( sr4, 104, { 0x00 } );
   EXPECT_TRUE( interrupts() );
   EXPECT_EQ( byteOf( sr4, 7 ), 0xA0 );
   EXPECT_FALSE( interrupts() );
}

TEST_F( QsfpModuleTest, MasksTheFlagsOfItsLanesInPage3 ) {
   set( sr4, "u1.lane1 age", 40 );
   EXPECT_TRUE( interrupts() );
   writeTo( sr4, 127, { 0x03 } );
   EXPECT_EQ( writeTo( sr4, 244, { 0x20 } ), 2 );
   EXPECT_FALSE( interrupts() );
   EXPECT_EQ( byteOf( sr4, 11 ), 0x20 ); // the flag is there all the same
}

TEST_F( QsfpModuleTest, TurnsALaserOffByItsBit ) {
   writeTo( sr4, 86, { 0x02 } );
   clock.advance( 99ms );
   EXPECT_GT( wordOf( sr4, 52 ), 8000 );
   clock.advance( 1ms );
   EXPECT_EQ( readFrom( sr4, 44, 2 ), ( Bytes{ 0, 0 } ) );
   EXPECT_EQ( readFrom( sr4, 52, 2 ), ( Bytes{ 0, 0 } ) );
   EXPECT_GT( wordOf( sr4, 50 ), 8000 );
   EXPECT_EQ( flags(), noFlags );
   writeTo( sr4, 86, { 0x00 } );
   clock.advance( 399ms );
   EXPECT_EQ( wordOf( sr4, 52 ), 0 );
   clock.advance( 1ms );
   EXPECT_GT( wordOf( sr4, 52 ), 8000 );
}

TEST_F( QsfpModuleTest, IsDarkInLowPower ) {
   sr4.ordersAre( { .lowPower = true } );
   clock.advance( 100ms );
   EXPECT_EQ( wordOf( sr4, 50 ), 0 );
   EXPECT_EQ( byteOf( sr4, 2 ), 0x02 ); // it is ready, and its monitors work
   EXPECT_GT( wordOf( sr4, 22 ), 30 * 256 );
   sr4.ordersAre( {} );
   clock.advance( 299ms );
   EXPECT_EQ( wordOf( sr4, 50 ), 0 );
   clock.advance( 1ms );
   EXPECT_GT( wordOf( sr4, 50 ), 8000 );
   EXPECT_EQ( flags(), noFlags );
}

TEST_F( QsfpModuleTest, CoolsDownInLowPower ) {
   const double before = quantity( sr4, "temperature" ).get();
   sr4.ordersAre( { .lowPower = true } );
   clock.advance( 1h );
   EXPECT_NEAR( quantity( sr4, "temperature" ).get(), before - 13 * 0.75, 1.3 );
}

TEST_F( QsfpModuleTest, LetsTheSoftwareDecideOnPowerAgainstThePin ) {
   sr4.ordersAre( { .lowPower = true } );
   writeTo( sr4, 93, { 0x01 } ); // override, high power
   clock.advance( 1s );
   EXPECT_GT( wordOf( sr4, 50 ), 8000 );
   sr4.ordersAre( {} );
   writeTo( sr4, 93, { 0x03 } );
   clock.advance( 1s );
   EXPECT_EQ( wordOf( sr4, 50 ), 0 );
   writeTo( sr4, 93, { 0x02 } ); // without the override the bit says nothing
   clock.advance( 1s );
   EXPECT_GT( wordOf( sr4, 50 ), 8000 );
}

TEST_F( QsfpModuleTest, TakesTwoSecondsToBecomeReadyThenTellsSoByAnInterrupt ) {
   plugIn();
   EXPECT_FALSE( answers( sr4 ) );
   clock.advance( 399ms );
   EXPECT_FALSE( answers( sr4 ) );
   clock.advance( 1ms );
   EXPECT_EQ( byteOf( sr4, 2 ), 0x03 ); // not ready, no interrupt
   EXPECT_EQ( byteOf( sr4, 128 ), 0x11 );
   EXPECT_EQ( wordOf( sr4, 22 ), 0 );
   clock.advance( 1599ms );
   EXPECT_FALSE( interrupts() );
   clock.advance( 1ms );
   EXPECT_TRUE( interrupts() );
   EXPECT_EQ( byteOf( sr4, 2 ), 0x00 );
   EXPECT_EQ( byteOf( sr4, 2 ), 0x02 );
   EXPECT_FALSE( interrupts() );
   EXPECT_GT( wordOf( sr4, 50 ), 8000 );
}

TEST_F( QsfpModuleTest, IsSilentInResetAndStartsAnewAfterIt ) {
   writeTo( sr4, 86, { 0x0F } );
   writeTo( sr4, 104, { 0xF0 } );
   writeTo( sr4, 127, { 0x03 } );
   writeTo( sr4, 242, { 0xFF } ); // masks of a lane
   sr4.ordersAre( { .reset = true } );
   clock.advance( 10s );
   EXPECT_FALSE( answers( sr4 ) );
   EXPECT_FALSE( interrupts() );
   EXPECT_EQ( quantity( sr4, "u1.lane1 txPower" ).get(), 0 );
   sr4.ordersAre( {} );
   clock.advance( 1999ms );
   EXPECT_EQ( byteOf( sr4, 2 ), 0x03 );
   clock.advance( 1ms );
   EXPECT_EQ( byteOf( sr4, 2 ), 0x00 );
   EXPECT_EQ( byteOf( sr4, 86 ), 0x00 );
   EXPECT_EQ( byteOf( sr4, 104 ), 0x00 );
   EXPECT_EQ( byteOf( sr4, 127 ), 0x00 );
   EXPECT_EQ( page( sr4, 0x03, 242, 1 ), Bytes{ 0x00 } );
   EXPECT_GT( wordOf( sr4, 50 ), 8000 );
}

TEST_F( QsfpModuleTest, KeepsTheUsersPageAndNothingElseThatIsReadOnly ) {
   EXPECT_EQ( page( sr4, 0x02, 128, 2 ), ( Bytes{ 0, 0 } ) );
   writeTo( sr4, 128, { 0x12, 0x34 } );
   EXPECT_EQ( page( sr4, 0x02, 128, 2 ), ( Bytes{ 0x12, 0x34 } ) );
   plugIn();
   clock.advance( 2s );
   EXPECT_EQ( page( sr4, 0x02, 128, 2 ), ( Bytes{ 0x12, 0x34 } ) );
   for ( const int number : { 0x00, 0x03 } ) {
      const Bytes before = page( sr4, number, 128, 96 );
      EXPECT_EQ( writeTo( sr4, 128, { 0x55 } ), 2 );
      EXPECT_EQ( readFrom( sr4, 128, 96 ), before );
   }
   EXPECT_EQ( writeTo( sr4, 22, { 0x55 } ), 2 );
   EXPECT_NE( byteOf( sr4, 22 ), 0x55 );
}

TEST_F( QsfpModuleTest, ReadsOnFromByteToByte ) {
   readFrom( sr4, 147, 1 );
   sr4.addressed( Direction::Read );
   EXPECT_EQ( sr4.read(), 'O' );
   EXPECT_EQ( readFrom( sr4, 127, 2 ), ( Bytes{ 0x00, 0x11 } ) );
   EXPECT_EQ( readFrom( sr4, 255, 2 ).at( 1 ), 0x11 );
}

TEST_F( QsfpModuleTest, ReadsWordsOfOneSample ) {
   set( sr4, "ambient", 30 );
   sr4.addressed( Direction::Write );
   sr4.command( 22 );
   sr4.addressed( Direction::Read );
   EXPECT_EQ( sr4.read(), 43 );
   sr4.model().ambientIs( 50.5 );
   EXPECT_EQ( sr4.read(), 0x00 );
   EXPECT_EQ( readFrom( sr4, 22, 2 ), ( Bytes{ 63, 0x80 } ) );
}

TEST_F( QsfpModuleTest, IsACableWithOnePageAndWithoutMonitors ) {
   EXPECT_EQ( readFrom( cable, 0, 3 ), ( Bytes{ 0x11, 0x08, 0x06 } ) );
   EXPECT_EQ( page( cable, 0x03, 127, 3 ), ( Bytes{ 0x00, 0x11, 0x00 } ) );
   EXPECT_EQ( readFrom( cable, 22, 36 ), Bytes( 36, 0 ) );
   EXPECT_EQ( byteOf( cable, 146 ), 3 );
   EXPECT_EQ( byteOf( cable, 147 ), 0xA0 );
   EXPECT_EQ( byteOf( cable, 220 ), 0x00 );
   EXPECT_FALSE( cable.signals().interrupt );
}

TEST_F( QsfpModuleTest, StaysWithinItsLimitsForADay ) {
   set( sr4, "ambient", 30 );
   for ( int i = 0; i < 5000; ++i ) {
      clock.advance( 17s );
      ASSERT_EQ( flags(), noFlags ) << i;
   }
}

} // namespace

} // namespace SimulatorTest
