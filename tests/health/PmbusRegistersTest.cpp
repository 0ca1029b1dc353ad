#include "health/pmbus/Formats.h"
#include "health/pmbus/Limits.h"
#include "health/pmbus/Registers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace HealthTest {

namespace {

using namespace Health;
using namespace Health::Pmbus;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST( PmbusRegistersTest, PointsToTheRegistersThatSayMore ) {
   const struct {
      uint16_t word;
      std::vector<uint8_t> behind;
   } rows[] = {
      { 0x0000, {} },       { 0x0840, {} }, // off, not good: no register says more of these
      { 0x2848, { 0x7C } }, { 0x0008, { 0x7C } },
      { 0x8001, { 0x7A } }, { 0x4010, { 0x7B } },
      { 0x0400, { 0x81 } }, { 0x0004, { 0x7D } },
      { 0x0002, { 0x7E } }, { 0xFFFF, { 0x7C, 0x7A, 0x7B, 0x81, 0x7D, 0x7E } },
   };
   for ( const auto &row : rows )
      EXPECT_EQ( registersBehind( row.word ), row.behind ) << row.word;
}

TEST( PmbusRegistersTest, AreOneTextAndComeBackFromIt ) {
   const Registers registers{ { 0x7C, 0x18 }, { 0x79, 0x2848 } };
   EXPECT_EQ( toText( registers ), "0x79=0x2848 0x7c=0x18" );
   EXPECT_EQ( registersIn( "0x79=0x2848 0x7c=0x18" ), registers );
   EXPECT_EQ( toText( Health::Pmbus::Registers{} ), "" );
   EXPECT_THAT( registersIn( "" ), IsEmpty() );
}

TEST( PmbusRegistersTest, LeavesOutWhatCannotBeRead ) {
   EXPECT_EQ(
      registersIn( "0x79=0x0001 nonsense 0x7a= =0x10 0x7b=0x10000 0x17c=0x10 124=16 0x81=0x80x "
                   "0x7d=0x40" ),
      ( Registers{ { 0x79, 0x0001 }, { 0x7D, 0x40 } } ) );
}

TEST( PmbusFormatsTest, ReadsLinear11 ) {
   EXPECT_EQ( linear11( 0xD3C0 ), 15 );
   EXPECT_EQ( linear11( 0x0064 ), 100 );
   EXPECT_EQ( linear11( 0x07FF ), -1 );
   EXPECT_EQ( linear11( 0xDCD0 ), -25.5 );
   EXPECT_EQ( linear11( 0x7BFF ), 1023.0 * 32768 );
}

TEST( PmbusFormatsTest, ReadsUlinear16ByVoutMode ) {
   EXPECT_EQ( ulinear16( 0x1800, 0x17 ), 12 ); // exponent -9
   EXPECT_EQ( ulinear16( 0xC800, 0x17 ), 100 );
   EXPECT_EQ( ulinear16( 3, 0x02 ), 12 );
   EXPECT_EQ( ulinear16( 0x8000, 0x10 ), 0.5 );          // exponent -16
   EXPECT_EQ( ulinear16( 0x1800, 0x20 ), std::nullopt ); // VID
   EXPECT_EQ( ulinear16( 0x1800, 0x40 ), std::nullopt ); // direct
}

TEST( PmbusLimitsTest, ReadsEachLimitInItsFormat ) {
   const Registers registers{ { 0x20, 0x17 },   { 0x40, 0x1B00 }, { 0x42, 0x1A00 },
                              { 0x43, 0x1600 }, { 0x44, 0x1500 }, { 0x46, 0x0054 },
                              { 0x4A, 0x0046 }, { 0x4F, 0x006E }, { 0x51, 0x005F },
                              { 0x55, 0x010E }, { 0x57, 0x0108 }, { 0x58, 0x005A },
                              { 0x59, 0x0055 }, { 0x6A, 0x0352 }, { 0x6B, 0x03B6 } };
   EXPECT_THAT( limitsIn( registers ),
                ElementsAre( Limit{ "output_voltage", true, Level::Critical, 13.5, "V" },
                             Limit{ "output_voltage", true, Level::Warning, 13, "V" },
                             Limit{ "output_voltage", false, Level::Warning, 11, "V" },
                             Limit{ "output_voltage", false, Level::Critical, 10.5, "V" },
                             Limit{ "output_current", true, Level::Critical, 84, "A" },
                             Limit{ "output_current", true, Level::Warning, 70, "A" },
                             Limit{ "temperature", true, Level::Critical, 110, "°C" },
                             Limit{ "temperature", true, Level::Warning, 95, "°C" },
                             Limit{ "input_voltage", true, Level::Critical, 270, "V" },
                             Limit{ "input_voltage", true, Level::Warning, 264, "V" },
                             Limit{ "input_voltage", false, Level::Warning, 90, "V" },
                             Limit{ "input_voltage", false, Level::Critical, 85, "V" },
                             Limit{ "output_power", true, Level::Warning, 850, "W" },
                             Limit{ "input_power", true, Level::Warning, 950, "W" } ) );
}

TEST( PmbusLimitsTest, HasOnlyThoseThatTheSupplyGave ) {
   EXPECT_THAT( limitsIn( { { 0x51, 0x005F } } ),
                ElementsAre( Limit{ "temperature", true, Level::Warning, 95, "°C" } ) );
   EXPECT_THAT( limitsIn( { { 0x42, 0x1A00 } } ), IsEmpty() ); // no VOUT_MODE
   EXPECT_THAT( limitsIn( { { 0x20, 0x40 }, { 0x42, 0x1A00 } } ), IsEmpty() );
   EXPECT_EQ( limitCommands().size(), 14 );
}

} // namespace

} // namespace HealthTest
