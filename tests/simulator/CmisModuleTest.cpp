#include "simulator/chips/modules/CmisModule.h"
#include "ManualClock.h"
#include "ModulePins.h"
#include "simulator/chips/modules/ModuleKeys.h"

#include <gtest/gtest.h>

namespace SimulatorTest {

namespace {

using namespace Simulator;
using namespace std::chrono_literals;

class CmisModuleTest : public ::testing::Test {
 protected:
   CmisModule make( std::string_view media ) {
      return { "u1",
               clock,
               productOf( cmisProducts(), media ),
               { "Orbis Optics", "DD-400", "B", "D0001", "240301" },
               3,
               9 };
   }
   static void choose( CmisModule &module, int page, int bank = 0 ) {
      writeTo( module, 126, { bank, page } );
   }
   static Bytes read( CmisModule &module, int page, unsigned at, unsigned count ) {
      choose( module, page );
      return readFrom( module, at, count );
   }
   static int word( CmisModule &module, int page, unsigned at ) {
      choose( module, page );
      return wordOf( module, at );
   }
   static int sum( CmisModule &module, int page, unsigned first, unsigned last ) {
      choose( module, page );
      return sumOf( module, first, last );
   }
   void writeControl( unsigned at, const Bytes &bytes ) {
      choose( dr4, 0x10 );
      writeTo( dr4, at, bytes );
   }
   Bytes laneStates() { return read( dr4, 0x11, 128, 4 ); }
   int moduleState() { return byteOf( dr4, 3 ) >> 1; }
   bool interrupts() { return dr4.signals().interrupt; }
   void plugIn() {
      dr4.presentIs( false );
      dr4.presentIs( true );
   }
   static Bytes all( int state ) { return Bytes( 4, state << 4 | state ); }

   TestSupport::ManualClock clock;
   CmisModule dr4 = make( "400GBASE-DR4" );
   CmisModule sr8 = make( "400GBASE-SR8" );
   CmisModule cable = make( "400GBASE-CR8" );
};

TEST_F( CmisModuleTest, HoldsItsIdentification ) {
   EXPECT_EQ( readFrom( dr4, 0, 4 ), ( Bytes{ 0x18, 0x52, 0x00, 0x07 } ) );
   EXPECT_EQ( byteOf( dr4, 128 ), 0x18 );
   EXPECT_EQ( textOf( dr4, 129, 16 ), "Orbis Optics    " );
   EXPECT_EQ( textOf( dr4, 148, 16 ), "DD-400          " );
   EXPECT_EQ( textOf( dr4, 164, 2 ), "B " );
   EXPECT_EQ( textOf( dr4, 166, 16 ), "D0001           " );
   EXPECT_EQ( textOf( dr4, 182, 8 ), "240301  " );
   EXPECT_EQ( readFrom( dr4, 200, 4 ), ( Bytes{ 0x80, 38, 0x00, 0x0C } ) ); // 9.5 W
   EXPECT_EQ( byteOf( dr4, 210 ), 0xF0 );
   EXPECT_EQ( byteOf( sr8, 210 ), 0x00 );
}

TEST_F( CmisModuleTest, HasRightChecksums ) {
   for ( const CmisProduct &product : cmisProducts() ) {
      CmisModule module = make( product.media );
      EXPECT_EQ( read( module, 0x00, 222, 1 ).at( 0 ), sum( module, 0x00, 128, 221 ) );
      if ( !module.hasPages() )
         continue;
      EXPECT_EQ( read( module, 0x01, 255, 1 ).at( 0 ), sum( module, 0x01, 130, 254 ) );
      EXPECT_EQ( read( module, 0x02, 255, 1 ).at( 0 ), sum( module, 0x02, 128, 254 ) );
   }
}

TEST_F( CmisModuleTest, RefusesATextThatIsLongerThanItsField ) {
   EXPECT_THROW( cmisIdentification( cmisProducts().front(), { "", "", "ABC", "", "" }, 1 ),
                 std::length_error );
}

TEST_F( CmisModuleTest, ListsItsApplications ) {
   EXPECT_EQ( byteOf( dr4, 85 ), 0x02 ); // single-mode fibre
   EXPECT_EQ( readFrom( dr4, 86, 9 ),
              ( Bytes{ 0x11, 0x1C, 0x84, 0x01, 0x0D, 0x14, 0x21, 0x55, 0xFF } ) );
   EXPECT_EQ( read( dr4, 0x01, 176, 2 ), ( Bytes{ 0x01, 0x0F } ) );
}

TEST_F( CmisModuleTest, MeasuresWhatIsSet ) {
   set( sr8, "ambient", 30.5 ); // its own heat is 19 degrees
   set( sr8, "supply", 3.3 );
   set( sr8, "u1.lane1 rxPower", 0.5 );
   set( sr8, "u1.lane8 rxPower", 0.7 );
   EXPECT_EQ( readFrom( sr8, 14, 4 ), ( Bytes{ 49, 0x80, 0x80, 0xE8 } ) );
   EXPECT_EQ( word( sr8, 0x11, 186 ), 5000 );
   EXPECT_EQ( word( sr8, 0x11, 200 ), 7000 );
   EXPECT_NEAR( word( sr8, 0x11, 154 ), 10400, 10400 * 0.04 );
   EXPECT_NEAR( word( sr8, 0x11, 184 ) * 0.002, 8.2, 8.2 * 0.08 );
}

TEST_F( CmisModuleTest, CountsLaserCurrentsInItsOwnSteps ) {
   EXPECT_EQ( read( dr4, 0x01, 160, 1 ), Bytes{ 0x0F } ); // twice 2 uA
   EXPECT_EQ( word( dr4, 0x02, 184 ), 27500 );            // 110 mA
   EXPECT_NEAR( word( dr4, 0x11, 170 ) * 0.004, quantity( dr4, "u1.lane1 bias" ).get(), 0.002 );
   CmisModule fr4 = make( "400GBASE-FR4" );
   EXPECT_EQ( read( fr4, 0x01, 160, 1 ), Bytes{ 0x17 } );
   EXPECT_NEAR( word( fr4, 0x11, 170 ) * 0.008, quantity( fr4, "u1.lane1 bias" ).get(), 0.004 );
}

TEST_F( CmisModuleTest, HasThresholdsInTheOrderOfItsPage ) {
   EXPECT_EQ( read( dr4, 0x02, 128, 8 ),
              ( Bytes{ 0x4B, 0x00, 0xFB, 0x00, 0x46, 0x00, 0x00, 0x00 } ) );
   EXPECT_EQ( word( dr4, 0x02, 136 ), 36300 );
   EXPECT_EQ( word( dr4, 0x02, 178 ), 3980 );  // tx power, low alarm
   EXPECT_EQ( word( dr4, 0x02, 192 ), 31620 ); // rx power, high alarm
}

TEST_F( CmisModuleTest, GoesBackToPage0ForAPageOrABankThatItHasNot ) {
   for ( const int page : { 0x03, 0x12, 0x20, 0xFF } )
      EXPECT_EQ( read( dr4, page, 127, 2 ), ( Bytes{ 0x00, 0x18 } ) ) << page;
   choose( dr4, 0x11, 1 );
   EXPECT_EQ( readFrom( dr4, 126, 3 ), ( Bytes{ 0x01, 0x00, 0x18 } ) );
   choose( dr4, 0x02, 1 ); // that page has no banks
   EXPECT_EQ( byteOf( dr4, 127 ), 0x02 );
}

TEST_F( CmisModuleTest, ComesUpStateByState ) {
   plugIn();
   clock.advance( 1999ms );
   EXPECT_FALSE( answers( dr4 ) );
   clock.advance( 1ms );
   EXPECT_EQ( moduleState(), 2 ); // powering up
   EXPECT_EQ( laneStates(), all( 1 ) );
   clock.advance( 399ms );
   EXPECT_EQ( moduleState(), 2 );
   clock.advance( 1ms );
   EXPECT_EQ( moduleState(), 3 );
   EXPECT_EQ( laneStates(), all( 2 ) );
   clock.advance( 800ms );
   EXPECT_EQ( laneStates(), all( 5 ) );
   EXPECT_EQ( word( dr4, 0x11, 154 ), 0 );
   clock.advance( 80ms );
   EXPECT_EQ( laneStates(), all( 4 ) );
   EXPECT_GT( word( dr4, 0x11, 154 ), 14000 );
}

TEST_F( CmisModuleTest, ComesUpInTheSameTimeWhenNobodyLooks ) {
   plugIn();
   clock.advance( 2s + 400ms + 800ms + 79ms );
   EXPECT_EQ( laneStates(), all( 5 ) );
   clock.advance( 1ms );
   EXPECT_EQ( laneStates(), all( 4 ) );
}

TEST_F( CmisModuleTest, TellsOfItsNewStates ) {
   plugIn();
   clock.advance( 2s );
   EXPECT_TRUE( interrupts() );
   EXPECT_EQ( readFrom( dr4, 8, 1 ), Bytes{ 0x01 } );
   EXPECT_FALSE( interrupts() );
   clock.advance( 2s );
   EXPECT_EQ( byteOf( dr4, 3 ), 0x06 );
   EXPECT_EQ( readFrom( dr4, 4, 1 ), Bytes{ 0x01 } );
   EXPECT_EQ( readFrom( dr4, 8, 2 ), ( Bytes{ 0x01, 0x00 } ) );
   EXPECT_EQ( read( dr4, 0x11, 134, 1 ), Bytes{ 0xFF } );
   EXPECT_EQ( readFrom( dr4, 3, 2 ), ( Bytes{ 0x07, 0x00 } ) );
}

TEST_F( CmisModuleTest, StaysInLowPowerAtThePinUntilItMayComeUp ) {
   dr4.ordersAre( { .lowPower = true } );
   plugIn();
   clock.advance( 1h );
   EXPECT_EQ( moduleState(), 1 );
   dr4.ordersAre( {} );
   clock.advance( 400ms );
   EXPECT_EQ( moduleState(), 3 );
}

TEST_F( CmisModuleTest, TakesItsDataPathsDownBeforeItself ) {
   writeTo( dr4, 26, { 0x50 } );
   EXPECT_EQ( laneStates(), all( 6 ) );
   EXPECT_EQ( moduleState(), 3 );
   clock.advance( 40ms );
   EXPECT_EQ( laneStates(), all( 3 ) );
   clock.advance( 40ms );
   EXPECT_EQ( laneStates(), all( 1 ) );
   EXPECT_EQ( moduleState(), 4 );
   clock.advance( 90ms );
   EXPECT_EQ( moduleState(), 1 );
   writeTo( dr4, 26, { 0x40 } );
   EXPECT_EQ( moduleState(), 2 );
}

TEST_F( CmisModuleTest, IgnoresThePinWhenTheHostSaysSo ) {
   writeTo( dr4, 26, { 0x00 } );
   dr4.ordersAre( { .lowPower = true } );
   clock.advance( 1s );
   EXPECT_EQ( moduleState(), 3 );
}

TEST_F( CmisModuleTest, KeepsALaneInitializedWhoseLaserIsDisabled ) {
   writeControl( 130, { 0x02 } );
   clock.advance( 40ms );
   EXPECT_EQ( laneStates().at( 0 ), 0x74 );
   EXPECT_EQ( word( dr4, 0x11, 156 ), 0 );
   EXPECT_EQ( read( dr4, 0x11, 133, 1 ), Bytes{ 0x0D } );
   EXPECT_EQ( read( dr4, 0x11, 139, 8 ), Bytes( 8, 0 ) ); // its words are not valid
   writeControl( 130, { 0x00 } );
   clock.advance( 80ms );
   EXPECT_EQ( laneStates(), all( 4 ) );
}

TEST_F( CmisModuleTest, KeepsADataPathDownOnDemand ) {
   writeControl( 128, { 0xFF } );
   clock.advance( 80ms );
   EXPECT_EQ( laneStates(), all( 1 ) );
   EXPECT_EQ( moduleState(), 3 );
   writeControl( 128, { 0x00 } );
   clock.advance( 880ms );
   EXPECT_EQ( laneStates(), all( 4 ) );
}

TEST_F( CmisModuleTest, AppliesAnotherApplication ) {
   writeControl( 145, Bytes( 8, 0x20 ) );
   EXPECT_EQ( read( dr4, 0x11, 206, 1 ), Bytes{ 0x10 } );
   writeControl( 143, { 0xFF } );
   EXPECT_EQ( laneStates(), all( 6 ) );
   EXPECT_EQ( read( dr4, 0x11, 202, 5 ), ( Bytes{ 0x11, 0x11, 0x11, 0x11, 0x20 } ) );
   clock.advance( 960ms );
   EXPECT_EQ( laneStates(), all( 4 ) );
   EXPECT_EQ( read( dr4, 0x10, 143, 1 ), Bytes{ 0x00 } ); // a trigger
}

TEST_F( CmisModuleTest, RefusesAnApplicationThatItHasNot ) {
   writeControl( 145, { 0x30 } );
   writeControl( 143, { 0x01 } );
   EXPECT_EQ( read( dr4, 0x11, 202, 1 ), Bytes{ 0x13 } );
   EXPECT_EQ( read( dr4, 0x11, 206, 1 ), Bytes{ 0x10 } );
   EXPECT_EQ( laneStates(), all( 4 ) );
}

TEST_F( CmisModuleTest, LeavesALaneWithoutApplicationDeactivated ) {
   writeControl( 145, { 0x00 } );
   writeControl( 143, { 0x01 } );
   clock.advance( 1s );
   EXPECT_EQ( laneStates().at( 0 ), 0x41 );
}

TEST_F( CmisModuleTest, KeepsAFlagUntilItIsReadAndSetsItAgainWhileItsReasonIsThere ) {
   set( dr4, "ambient", 51 ); // 72: a warning
   EXPECT_EQ( byteOf( dr4, 9 ), 0x04 );
   EXPECT_EQ( byteOf( dr4, 9 ), 0x04 );
   set( dr4, "ambient", 30 );
   set( dr4, "supply", 2.9 );
   set( dr4, "supply", 3.3 );
   EXPECT_EQ( byteOf( dr4, 9 ), 0xA4 ); // low alarm and warning
   EXPECT_EQ( byteOf( dr4, 9 ), 0x00 );
}

TEST_F( CmisModuleTest, HasABitForEachLaneInItsFlags ) {
   set( dr4, "u1.lane1 rxPower", 0.2 ); // a warning
   set( dr4, "u1.lane3 rxPower", 0 );
   EXPECT_EQ( read( dr4, 0x11, 147, 6 ), ( Bytes{ 0x04, 0x04, 0x00, 0x04, 0x00, 0x05 } ) );
   set( dr4, "u1.lane2 age", 40 );
   EXPECT_EQ( read( dr4, 0x11, 143, 4 ), ( Bytes{ 0x00, 0x00, 0x02, 0x00 } ) );
   set( dr4, "u1.lane2 age", 90 ); // more current than its driver has, and little light
   EXPECT_EQ( read( dr4, 0x11, 139, 8 ), ( Bytes{ 0, 0x02, 0, 0x02, 0x02, 0, 0x02, 0 } ) );
   set( dr4, "u1.lane4 age", 100 );
   EXPECT_EQ( read( dr4, 0x11, 135, 1 ), Bytes{ 0x08 } );
}

TEST_F( CmisModuleTest, InterruptsWhileAFlagIsSetThatIsNotMasked ) {
   set( dr4, "u1.lane1 rxPower", 0 );
   EXPECT_EQ( byteOf( dr4, 3 ), 0x06 );
   EXPECT_TRUE( interrupts() );
   writeControl( 226, Bytes{ 0x01, 0x01, 0x01, 0x01, 0x01, 0x01 } ); // of 147 to 152
   EXPECT_FALSE( interrupts() );
   set( dr4, "supply", 3.7 );
   EXPECT_TRUE( interrupts() );
   writeTo( dr4, 32, { 0xF0 } );
   EXPECT_FALSE( interrupts() );
   EXPECT_EQ( byteOf( dr4, 3 ), 0x07 );
   EXPECT_EQ( byteOf( dr4, 9 ), 0x50 );
}

TEST_F( CmisModuleTest, StartsAnewAfterAResetByPinOrBySoftware ) {
   for ( const bool byPin : { true, false } ) {
      writeControl( 130, { 0x0F } );
      writeTo( dr4, 32, { 0xFF } );
      if ( byPin ) {
         dr4.ordersAre( { .reset = true } );
         clock.advance( 10s );
         EXPECT_FALSE( answers( dr4 ) );
         dr4.ordersAre( {} );
      } else {
         writeTo( dr4, 26, { 0x48 } );
      }
      clock.advance( 1999ms );
      EXPECT_FALSE( answers( dr4 ) );
      clock.advance( 1ms );
      EXPECT_EQ( byteOf( dr4, 26 ), 0x40 );
      EXPECT_EQ( readFrom( dr4, 126, 2 ), ( Bytes{ 0, 0 } ) );
      EXPECT_EQ( byteOf( dr4, 32 ), 0x00 );
      EXPECT_EQ( read( dr4, 0x10, 130, 1 ), Bytes{ 0x00 } );
      clock.advance( 2s );
      EXPECT_EQ( laneStates(), all( 4 ) );
   }
}

TEST_F( CmisModuleTest, IgnoresWritesOfWhatIsReadOnly ) {
   for ( const int page : { 0x00, 0x01, 0x02 } ) {
      const Bytes before = read( dr4, page, 128, 128 );
      EXPECT_EQ( writeTo( dr4, 140, { 0x55 } ), 2 );
      EXPECT_EQ( readFrom( dr4, 128, 128 ), before );
   }
   writeTo( dr4, 85, { 0x55 } );
   EXPECT_EQ( byteOf( dr4, 85 ), 0x02 );
   writeTo( dr4, 118, { 1, 2, 3, 4 } ); // passwords can't be read
   EXPECT_EQ( readFrom( dr4, 118, 4 ), Bytes( 4, 0 ) );
}

TEST_F( CmisModuleTest, IsACableThatIsAlwaysReadyAndHasOnePage ) {
   EXPECT_EQ( readFrom( cable, 0, 4 ), ( Bytes{ 0x18, 0x52, 0x80, 0x07 } ) );
   EXPECT_EQ( read( cable, 0x11, 127, 2 ), ( Bytes{ 0x00, 0x18 } ) );
   EXPECT_EQ( readFrom( cable, 14, 4 ), Bytes( 4, 0 ) );
   EXPECT_EQ( byteOf( cable, 202 ), 0x43 ); // 3 m
   EXPECT_EQ( byteOf( cable, 212 ), 0x0A );
   EXPECT_FALSE( cable.signals().interrupt );
}

TEST_F( CmisModuleTest, StaysWithinItsLimitsForADay ) {
   set( dr4, "ambient", 30 );
   for ( int i = 0; i < 5000; ++i ) {
      clock.advance( 17s );
      ASSERT_FALSE( interrupts() ) << i;
   }
}

} // namespace

} // namespace SimulatorTest
