#include "simulator/chips/PmbusSupply.h"
#include "BusPins.h"
#include "ManualClock.h"
#include "simulator/chips/PmbusFormats.h"

#include <gtest/gtest.h>

namespace SimulatorTest {

namespace {

using namespace TestSupport;
using namespace Bus;
using namespace Simulator;
using namespace std::chrono_literals;

TEST( PmbusFormatsTest, WritesLinear11WithTheWholeMantissa ) {
   const struct {
      double value;
      uint16_t word;
   } rows[] = {
      { 50, 0xE320 },   { 230, 0xF398 },   { 595, 0x0253 },      { 13571.4, 0x2350 },
      { 15, 0xD3C0 },   { -1, 0xB400 },    { -25.5, 0xDCD0 },    { 1023, 0x03FF },
      { 1024, 0x0A00 }, { -1024, 0x0400 }, { 0.015625, 0x8A00 }, { 1e9, 0x7BFF },
   };
   for ( const auto &row : rows )
      EXPECT_EQ( toLinear11( row.value ), row.word ) << row.value;
}

TEST( PmbusFormatsTest, ReadsLinear11InTwosComplement ) {
   EXPECT_EQ( fromLinear11( 0xD3C0 ), 15 );
   EXPECT_EQ( fromLinear11( 0x0064 ), 100 );
   EXPECT_EQ( fromLinear11( 0x07FF ), -1 );
   EXPECT_EQ( fromLinear11( 0x7BFF ), 1023.0 * 32768 );
}

TEST( PmbusFormatsTest, WritesLinear16Unsigned ) {
   EXPECT_EQ( toLinear16( 12, -9 ), 0x1800 );
   EXPECT_EQ( toLinear16( 100, -9 ), 0xC800 );
   EXPECT_EQ( toLinear16( -1, -9 ), 0 );
   EXPECT_EQ( toLinear16( 1000, -9 ), 0xFFFF );
}

class PmbusSupplyTest : public ::testing::Test {
 protected:
   PmbusSupplyTest() {
      chip.model().loadIs( 50 );
      chip.model().settle();
   }
   int status( uint32_t command ) { return readFrom( chip, command, 1 ).at( 0 ); }

   ManualClock clock;
   PmbusSupply chip{
      "psu", 0x58, clock, { 12, 70, 0.8, { 20000, 16000 } }, { "Kelt Power", "KP", "02", "S1" }
   };
};

TEST_F( PmbusSupplyTest, ShowsWhatItsModelHolds ) {
   const struct {
      uint32_t command;
      Bytes bytes;
   } rows[] = {
      { 0x88, { 0x98, 0xF3 } }, // 230 V
      { 0x89, { 0x45, 0xC3 } }, // 3.27 A
      { 0x8B, { 0xCD, 0x17 } }, // 11.9 V
      { 0x8C, { 0x20, 0xE3 } }, // 50 A
      { 0x8D, { 0x50, 0xDB } }, // 26.5 degrees
      { 0x90, { 0x50, 0x23 } }, // 13,571 rpm
      { 0x91, { 0xA7, 0x22 } }, // 10,857 rpm
      { 0x96, { 0x53, 0x02 } }, // 595 W
      { 0x97, { 0xF0, 0x02 } }, // 751.75 W
      { 0x79, { 0x00, 0x00 } },
   };
   for ( const auto &row : rows )
      EXPECT_EQ( readFrom( chip, row.command, 2 ), row.bytes ) << row.command;
}

TEST_F( PmbusSupplyTest, IdentifiesItself ) {
   EXPECT_EQ( readFrom( chip, 0x19, 1 ), Bytes{ 0xA0 } );
   EXPECT_EQ( readFrom( chip, 0x20, 1 ), Bytes{ 0x17 } );
   EXPECT_EQ( readFrom( chip, 0x3A, 1 ), Bytes{ 0x99 } );
   EXPECT_EQ( readFrom( chip, 0x98, 1 ), Bytes{ 0x11 } );
   EXPECT_EQ( readFrom( chip, 0x99, 11 ),
              ( Bytes{ 10, 'K', 'e', 'l', 't', ' ', 'P', 'o', 'w', 'e', 'r' } ) );
   EXPECT_EQ( readFrom( chip, 0x9A, 3 ), ( Bytes{ 2, 'K', 'P' } ) );
   EXPECT_EQ( readFrom( chip, 0x9B, 3 ), ( Bytes{ 2, '0', '2' } ) );
   EXPECT_EQ( readFrom( chip, 0x9E, 3 ), ( Bytes{ 2, 'S', '1' } ) );
}

TEST_F( PmbusSupplyTest, SendsAPacketErrorCodeAfterTheData ) {
   EXPECT_EQ( readFrom( chip, 0x20, 3 ), ( Bytes{ 0x17, 0xE4, 0xFF } ) );
   EXPECT_EQ( readFrom( chip, 0x9A, 4 ), ( Bytes{ 2, 'K', 'P', 0x12 } ) );
}

TEST_F( PmbusSupplyTest, RefusesCommandsThatItDoesNotKnow ) {
   EXPECT_EQ( status( 0x7E ), 0x00 );
   for ( const uint32_t command : { 0x02u, 0x05u, 0x21u, 0x8Au, 0x8Fu, 0xD0u } )
      EXPECT_EQ( writeTo( chip, command, {} ), 0 ) << command;
   EXPECT_EQ( status( 0x7E ), 0x80 );
   EXPECT_EQ( readFrom( chip, 0x79, 2 ), ( Bytes{ 0x02, 0x00 } ) );
   EXPECT_EQ( writeTo( chip, 0x03, {} ), 1 ); // CLEAR_FAULTS
   EXPECT_EQ( status( 0x7E ), 0x00 );
}

TEST_F( PmbusSupplyTest, AcceptsAFanCommandWithAndWithoutPacketErrorCode ) {
   EXPECT_EQ( writeTo( chip, 0x3B, { 0x64, 0x00 } ), 3 );
   EXPECT_EQ( readFrom( chip, 0x3B, 2 ), ( Bytes{ 0x64, 0x00 } ) );
   clock.advance( 1min );
   EXPECT_EQ( chip.model().rpm( 0 ), 20000 );
   chip.reset();
   EXPECT_EQ( writeTo( chip, 0x3B, { 0x64, 0x00, 0x34 } ), 4 );
   EXPECT_EQ( readFrom( chip, 0x3B, 2 ), ( Bytes{ 0x64, 0x00 } ) );
}

TEST_F( PmbusSupplyTest, RefusesDataWithAWrongPacketErrorCode ) {
   EXPECT_EQ( writeTo( chip, 0x3B, { 0x64, 0x00, 0x35 } ), 3 );
   EXPECT_EQ( readFrom( chip, 0x3B, 2 ), ( Bytes{ 0x00, 0x00 } ) );
   EXPECT_EQ( status( 0x7E ), 0x20 );
   EXPECT_EQ( writeTo( chip, 0x03, { 0x47 } ), 1 );
   EXPECT_EQ( status( 0x7E ), 0x20 );
   EXPECT_EQ( writeTo( chip, 0x03, { 0x46 } ), 2 );
   EXPECT_EQ( status( 0x7E ), 0x00 );
}

TEST_F( PmbusSupplyTest, RefusesDataForReadOnlyCommands ) {
   EXPECT_EQ( writeTo( chip, 0x88, { 0x00, 0x00 } ), 1 );
   EXPECT_EQ( status( 0x7E ), 0x80 );
}

TEST_F( PmbusSupplyTest, IgnoresAndReportsInvalidData ) {
   writeTo( chip, 0x3C, { 0x65, 0x00 } ); // 101 %
   EXPECT_EQ( readFrom( chip, 0x3C, 2 ), ( Bytes{ 0x00, 0x00 } ) );
   EXPECT_EQ( status( 0x7E ), 0x40 );
   writeTo( chip, 0x03, {} );
   writeTo( chip, 0x00, { 0x01 } ); // there is no second page
   EXPECT_EQ( status( 0x7E ), 0x40 );
}

TEST_F( PmbusSupplyTest, IgnoresAWordWithOneByte ) {
   writeTo( chip, 0x3B, { 0x64 } );
   EXPECT_EQ( readFrom( chip, 0x3B, 2 ), ( Bytes{ 0x00, 0x00 } ) );
   EXPECT_EQ( status( 0x7E ), 0x02 );
}

TEST_F( PmbusSupplyTest, NeverRunsItsFansSlowerThanItsLoadNeeds ) {
   writeTo( chip, 0x3B, { 0x0A, 0x00 } );
   clock.advance( 1min );
   EXPECT_NEAR( chip.model().rpm( 0 ), 13571.4, 0.1 );
}

TEST_F( PmbusSupplyTest, TurnsOffByOperationAndOnAgain ) {
   writeTo( chip, 0x01, { 0x00 } );
   EXPECT_EQ( readFrom( chip, 0x79, 2 ), ( Bytes{ 0x40, 0x08 } ) ); // off, and not good
   EXPECT_EQ( readFrom( chip, 0x8B, 2 ), ( Bytes{ 0x00, 0x00 } ) );
   writeTo( chip, 0x01, { 0x80 } );
   EXPECT_EQ( readFrom( chip, 0x79, 2 ), ( Bytes{ 0x00, 0x00 } ) );
}

TEST_F( PmbusSupplyTest, ReportsALowLineUntilFaultsAreCleared ) {
   chip.model().lineIs( 60 );
   EXPECT_EQ( readFrom( chip, 0x79, 2 ), ( Bytes{ 0x48, 0x28 } ) );
   EXPECT_EQ( status( 0x7C ), 0x18 );
   chip.model().lineIs( 230 );
   EXPECT_EQ( readFrom( chip, 0x79, 2 ), ( Bytes{ 0x08, 0x20 } ) );
   writeTo( chip, 0x03, {} );
   EXPECT_EQ( readFrom( chip, 0x79, 2 ), ( Bytes{ 0x00, 0x00 } ) );
}

TEST_F( PmbusSupplyTest, IsOnButNotGoodWhenItsConverterFails ) {
   quantity( chip, "failed" ).set( 1 );
   EXPECT_EQ( readFrom( chip, 0x79, 2 ), ( Bytes{ 0x01, 0x88 } ) );
   EXPECT_EQ( status( 0x7A ), 0x10 );
}

TEST_F( PmbusSupplyTest, ReportsAStalledFanAndAnOverload ) {
   quantity( chip, "psu.fan2 stalled" ).set( 1 );
   EXPECT_EQ( status( 0x81 ), 0x40 );
   EXPECT_EQ( quantity( chip, "psu.fan2 rpm" ).get(), 0 );
   quantity( chip, "load" ).set( 71 );
   EXPECT_EQ( status( 0x7B ), 0x20 );
}

// Nominal 12 V, 70 A, efficiency 0.8.
TEST_F( PmbusSupplyTest, HasLimitsInTheirFormats ) {
   const struct {
      uint32_t command;
      Bytes bytes;
   } rows[] = {
      { 0x40, { 0x66, 0x1A } }, // VOUT_OV_FAULT_LIMIT, 13.2 V
      { 0x42, { 0x33, 0x19 } }, // VOUT_OV_WARN_LIMIT, 12.6 V
      { 0x43, { 0xCD, 0x16 } }, // VOUT_UV_WARN_LIMIT, 11.4 V
      { 0x44, { 0x9A, 0x15 } }, // VOUT_UV_FAULT_LIMIT, 10.8 V
      { 0x46, { 0xA0, 0xEA } }, // IOUT_OC_FAULT_LIMIT, 84 A
      { 0x4A, { 0x30, 0xEA } }, // IOUT_OC_WARN_LIMIT, 70 A
      { 0x4F, { 0x70, 0xEB } }, // OT_FAULT_LIMIT, 110 degrees
      { 0x51, { 0xF8, 0xEA } }, // OT_WARN_LIMIT, 95 degrees
      { 0x55, { 0x38, 0xFA } }, // VIN_OV_FAULT_LIMIT, 284 V
      { 0x57, { 0x10, 0xFA } }, // VIN_OV_WARN_LIMIT, 264 V
      { 0x58, { 0xD0, 0xEA } }, // VIN_UV_WARN_LIMIT, 90 V
      { 0x59, { 0xA8, 0xEA } }, // VIN_UV_FAULT_LIMIT, 85 V
      { 0x6A, { 0x72, 0x03 } }, // POUT_OP_WARN_LIMIT, 882 W
      { 0x6B, { 0x2B, 0x0A } }, // PIN_OP_WARN_LIMIT, 1,110 W
   };
   for ( const auto &row : rows ) {
      EXPECT_EQ( readFrom( chip, row.command, 2 ), row.bytes ) << row.command;
      EXPECT_EQ( writeTo( chip, row.command, { 0, 0 } ), 1 ) << row.command; // read-only
   }
}

TEST_F( PmbusSupplyTest, SetsTheBitsOfTheLimitsThatItsValuesCross ) {
   const struct {
      const char *quantity;
      double value;
      uint32_t command;
      int bits;
      Bytes word;
   } rows[] = {
      { "load", 70, 0x7B, 0x00, { 0x00, 0x00 } },
      { "load", 70.5, 0x7B, 0x20, { 0x01, 0x40 } }, // IOUT_OC_WARNING
      { "load", 84, 0x7B, 0x21, { 0x01, 0x60 } },   // and POUT_OP_WARNING, PIN_OP_WARNING
      { "load", 84.5, 0x7B, 0x81, { 0x11, 0x60 } }, // IOUT_OC_FAULT
      { "line", 264, 0x7C, 0x00, { 0x00, 0x00 } },
      { "line", 265, 0x7C, 0x40, { 0x01, 0x20 } }, // VIN_OV_WARNING
      { "line", 285, 0x7C, 0x80, { 0x01, 0x20 } }, // VIN_OV_FAULT
      { "line", 90, 0x7C, 0x00, { 0x00, 0x00 } },
      { "line", 89, 0x7C, 0x20, { 0x01, 0x20 } }, // VIN_UV_WARNING
      { "line", 85, 0x7C, 0x20, { 0x01, 0x20 } },
      { "line", 84, 0x7C, 0x18, { 0x48, 0x28 } }, // VIN_UV_FAULT, off for it
      { "line", 0, 0x7C, 0x18, { 0x48, 0x28 } },
      { "failed", 1, 0x7A, 0x10, { 0x01, 0x88 } }, // VOUT_UV_FAULT
      { "psu.fan1 stalled", 1, 0x81, 0x80, { 0x01, 0x04 } },
   };
   for ( const auto &row : rows ) {
      quantity( chip, row.quantity ).set( row.value );
      EXPECT_EQ( readFrom( chip, 0x79, 2 ), row.word ) << row.quantity << row.value;
      EXPECT_EQ( status( row.command ), row.bits ) << row.quantity << row.value;
      quantity( chip, "load" ).set( 50 );
      quantity( chip, "line" ).set( 230 );
      quantity( chip, "failed" ).set( 0 );
      quantity( chip, "psu.fan1 stalled" ).set( 0 );
      writeTo( chip, 0x03, {} ); // CLEAR_FAULTS
      EXPECT_EQ( readFrom( chip, 0x79, 2 ), ( Bytes{ 0x00, 0x00 } ) ) << row.quantity << row.value;
   }
}

TEST_F( PmbusSupplyTest, SetsTheBitsOfTheTemperaturesThatItCrosses ) {
   const double ambient = quantity( chip, "ambient" ).get();
   const auto hotSpotIs = [&]( double celsius ) {
      chip.model().ambientIs( ambient );
      chip.model().settle();
      chip.model().ambientIs( ambient + celsius - chip.model().hotSpotCelsius() );
      chip.model().settle();
   };
   hotSpotIs( 94 );
   EXPECT_EQ( status( 0x7D ), 0x00 );
   hotSpotIs( 96 );
   EXPECT_EQ( status( 0x7D ), 0x40 ); // OT_WARNING
   EXPECT_EQ( readFrom( chip, 0x79, 2 ), ( Bytes{ 0x04, 0x00 } ) );
   writeTo( chip, 0x03, {} );
   hotSpotIs( 111 );
   EXPECT_EQ( status( 0x7D ), 0x80 ); // OT_FAULT
}

// Nobody reads anything while the fault is there.
TEST_F( PmbusSupplyTest, KeepsAFaultThatWasOverBeforeAnythingWasRead ) {
   quantity( chip, "line" ).set( 0 );
   quantity( chip, "line" ).set( 230 );
   EXPECT_EQ( readFrom( chip, 0x79, 2 ), ( Bytes{ 0x08, 0x20 } ) ); // on, and good
   EXPECT_EQ( status( 0x7C ), 0x18 );
}

TEST_F( PmbusSupplyTest, SetsABitAgainThatWasClearedDuringItsFault ) {
   quantity( chip, "psu.fan1 stalled" ).set( 1 );
   writeTo( chip, 0x03, {} );
   EXPECT_EQ( status( 0x81 ), 0x80 );
}

TEST_F( PmbusSupplyTest, WarmsUpSlowlyWithItsLoad ) {
   const double before = chip.model().hotSpotCelsius();
   EXPECT_NEAR( before, 54.22, 0.01 );
   chip.model().loadIs( 60 );
   EXPECT_NEAR( chip.model().hotSpotCelsius(), before, 0.01 );
   clock.advance( 10s );
   const double later = chip.model().hotSpotCelsius();
   clock.advance( 10min );
   EXPECT_NE( later, before );
   EXPECT_NE( chip.model().hotSpotCelsius(), later );
}

TEST_F( PmbusSupplyTest, ReadsFFWithoutACommand ) {
   chip.addressed( Direction::Read );
   EXPECT_EQ( chip.read(), 0xFF );
   chip.stopped();
   EXPECT_EQ( status( 0x7E ), 0x02 );
}

} // namespace

} // namespace SimulatorTest
