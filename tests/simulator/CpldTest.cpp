#include "BusPins.h"
#include "simulator/chips/SystemCpld.h"
#include "simulator/chips/XcvrCpld.h"

#include <gtest/gtest.h>

namespace SimulatorTest {

namespace {

using namespace Simulator;

struct CpldTest : ::testing::Test {
   XcvrCpld qsfp{ "q", XcvrCpld::qsfpCpld, 1, {} };
   XcvrCpld sfp{ "s", XcvrCpld::sfpCpld, 33, {} };
};

TEST_F( CpldTest, StartsWithoutModules ) {
   for ( const uint32_t presence : { 0x254u, 0x255u, 0x2D4u, 0x2D5u } )
      EXPECT_EQ( readFrom( qsfp, presence, 1 ), Bytes{ 0x00 } ) << presence;
   for ( const uint32_t held : { 0x250u, 0x251u, 0x2D0u, 0x2D1u, 0x256u, 0x2D7u } )
      EXPECT_EQ( readFrom( qsfp, held, 1 ), Bytes{ 0xFF } ) << held;
   EXPECT_EQ( readFrom( sfp, 0x242, 1 ), Bytes{ 0x03 } ); // loss of signal, pulled high
   EXPECT_EQ( readFrom( sfp, 0x3D5, 1 ), Bytes{ 0x0F } );
   EXPECT_EQ( readFrom( sfp, 0x360, 4 ), ( Bytes{ 0x3F, 0x00, 0x00, 0x3F } ) );
}

TEST_F( CpldTest, ShowsAModuleInEachCageAtItsOwnBit ) {
   const struct {
      XcvrCpld &chip;
      const char *cage;
      uint32_t presence;
      int byte;
   } rows[] = {
      { qsfp, "qsfp1", 0x254, 0x01 },  { qsfp, "qsfp9", 0x255, 0x01 },
      { qsfp, "qsfp24", 0x2D4, 0x80 }, { qsfp, "qsfp32", 0x2D5, 0x80 },
      { sfp, "sfp8", 0x259, 0x80 },    { sfp, "sfp16", 0x25A, 0x80 },
      { sfp, "sfp17", 0x25B, 0x01 },   { sfp, "sfp18", 0x25B, 0x02 },
      { sfp, "sfp19", 0x2D9, 0x01 },   { sfp, "sfp34", 0x2DA, 0x80 },
      { sfp, "sfp36", 0x2DB, 0x02 },   { sfp, "sfp37", 0x3D6, 0x01 },
      { sfp, "sfp48", 0x3D7, 0x08 },   { sfp, "qsfp33", 0x362, 0x01 },
      { sfp, "qsfp38", 0x362, 0x20 },
   };
   for ( const auto &row : rows ) {
      quantity( row.chip, std::string( row.cage ) + " presence" ).set( 1 );
      EXPECT_EQ( readFrom( row.chip, row.presence, 1 ), Bytes{ row.byte } ) << row.cage;
      quantity( row.chip, std::string( row.cage ) + " presence" ).set( 0 );
      EXPECT_EQ( readFrom( row.chip, row.presence, 1 ), Bytes{ 0x00 } ) << row.cage;
   }
}

TEST_F( CpldTest, LetsAModuleDriveItsLines ) {
   quantity( sfp, "sfp3 presence" ).set( 1 );
   EXPECT_EQ( readFrom( sfp, 0x240, 1 ), Bytes{ 0xFB } );
   quantity( sfp, "sfp3 txFault" ).set( 1 );
   EXPECT_EQ( readFrom( sfp, 0x256, 1 ), Bytes{ 0xFF } );
   EXPECT_EQ( readFrom( sfp, 0x240, 1 ), Bytes{ 0xFB } );
   quantity( qsfp, "qsfp2 interrupt" ).set( 1 ); // active low
   EXPECT_EQ( readFrom( qsfp, 0x256, 1 ), Bytes{ 0xFD } );
}

TEST_F( CpldTest, DrivesTheLinesToTheModules ) {
   EXPECT_EQ( quantity( qsfp, "qsfp17 reset" ).get(), 0 );
   writeTo( qsfp, 0x2D0, { 0xFE } );
   EXPECT_EQ( quantity( qsfp, "qsfp17 reset" ).get(), 1 );
   writeTo( qsfp, 0x2D2, { 0x02 } );
   EXPECT_EQ( quantity( qsfp, "qsfp18 lpMode" ).get(), 1 );
   writeTo( sfp, 0x3D1, { 0x08 } );
   EXPECT_EQ( quantity( sfp, "sfp48 txDisable" ).get(), 1 );
   EXPECT_EQ( quantity( sfp, "sfp47 txDisable" ).get(), 0 );
}

TEST_F( CpldTest, KeepsLinesFromTheModulesWhenTheyAreWritten ) {
   EXPECT_EQ( writeTo( qsfp, 0x254, { 0xFF } ), 2 );
   EXPECT_EQ( readFrom( qsfp, 0x254, 1 ), Bytes{ 0x00 } );
}

TEST_F( CpldTest, HasItsLedsOffAfterPowerOn ) {
   EXPECT_EQ( readFrom( sfp, 0x303, 1 ), Bytes{ 0x0F } );
   writeTo( sfp, 0x303, { 0x04 } );
   EXPECT_EQ( readFrom( sfp, 0x303, 1 ), Bytes{ 0x04 } );
   sfp.reset();
   EXPECT_EQ( readFrom( sfp, 0x303, 1 ), Bytes{ 0x0F } );
}

TEST_F( CpldTest, UsesAddressesOfTwoBytesAndIncrementsThem ) {
   EXPECT_EQ( qsfp.commandBytes(), 2u );
   writeTo( qsfp, 0x1FF, { 0x12, 0x34 } );
   EXPECT_EQ( readFrom( qsfp, 0x200, 1 ), Bytes{ 0x34 } );
   EXPECT_EQ( readFrom( qsfp, 0x0FF, 1 ), Bytes{ 0x00 } );
}

TEST( SystemCpldTest, RequestsAPowerCycleAtTheEndOfTheTransfer ) {
   int times = 0;
   SystemCpld chip( "c", { { 0x101, 0x07 } } );
   chip.onPowerCycle( [&] { ++times; } );
   EXPECT_EQ( readFrom( chip, 0x101, 1 ), Bytes{ 0x07 } );
   writeTo( chip, 0x102, { 0xFE } );
   writeTo( chip, 0x101, { 0x01 } );
   EXPECT_EQ( times, 0 );
   writeTo( chip, 0x102, { 0x01 } );
   EXPECT_EQ( times, 1 );
   readFrom( chip, 0x102, 1 );
   EXPECT_EQ( times, 1 );
}

} // namespace

} // namespace SimulatorTest
