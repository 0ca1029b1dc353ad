#include "OrbisGeneric/Components/Gpio.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/Drivers/Dummy.h"
#include "support/PluginFixture.h"
#include "support/ScriptedHam.h"

namespace {

using Component::LogicalDevice::RegGpio;

Drivers::DriverArgs bitOf( const char *reg, const char *bitpos ) {
   Drivers::DriverArgs args;
   args.driverArgs = { { "register", reg }, { "bitpos", bitpos } };
   return args;
}

class RegGpioTest : public PluginFixture {
 protected:
   RegGpioTest() { device.ham_ = &ham; }

   ScriptedHam ham;
   Drivers::Dummy device;
   RegGpio gpio{ &device, bitOf( "16", "3" ) };
   unsigned value = 7;
};

TEST_F( RegGpioTest, ReadsItsBit ) {
   ham.expectBatch( { read8( 16 ).answers( { 0x08 } ) } );
   EXPECT_EQ( gpio.bitRead( &value ), PL_STATUS_OK );
   EXPECT_EQ( value, 1u );
   ham.expectBatch( { read8( 16 ).answers( { 0xF7 } ) } );
   EXPECT_EQ( gpio.bitRead( &value ), PL_STATUS_OK );
   EXPECT_EQ( value, 0u );
}

TEST_F( RegGpioTest, AFailedReadKeepsTheOutput ) {
   ham.expectBatch( { read8( 16 ).fails( 6 ) } );
   EXPECT_EQ( gpio.bitRead( &value ), 6 );
   EXPECT_EQ( value, 7u );
}

TEST_F( RegGpioTest, SetsItsBitInASecondBatchAndKeepsTheOtherBits ) {
   ham.expectBatch( { read8( 16 ).answers( { 0x81 } ) } );
   ham.expectBatch( { write8( 16, 0x89 ) } );
   EXPECT_EQ( gpio.bitSet(), PL_STATUS_OK );
}

TEST_F( RegGpioTest, ClearsItsBitInASecondBatchAndKeepsTheOtherBits ) {
   ham.expectBatch( { read8( 16 ).answers( { 0x89 } ) } );
   ham.expectBatch( { write8( 16, 0x81 ) } );
   EXPECT_EQ( gpio.bitClear(), PL_STATUS_OK );
   ham.expectBatch( { read8( 16 ).answers( { 0x06 } ) } );
   ham.expectBatch( { write8( 16, 0x06 ) } );
   EXPECT_EQ( gpio.bitClear(), PL_STATUS_OK );
}

TEST_F( RegGpioTest, WritesNothingAfterAFailedRead ) {
   ham.expectBatch( { read8( 16 ).fails( 4 ) } );
   EXPECT_EQ( gpio.bitSet(), 4 );
   ham.expectBatch( { read8( 16 ).fails( 6 ) } );
   EXPECT_EQ( gpio.bitClear(), 6 );
}

TEST_F( RegGpioTest, ReturnsTheStatusOfAFailedWrite ) {
   ham.expectBatch( { read8( 16 ).answers( { 0 } ) } );
   ham.expectBatch( { write8( 16, 0x08 ).fails( 6 ) } );
   EXPECT_EQ( gpio.bitSet(), 6 );
}

TEST_F( RegGpioTest, AWriteOnlyRegisterIsNotRead ) {
   EXPECT_FALSE( gpio.writeOnly );
   gpio.writeOnly = true;
   ham.expectBatch( { write8( 16, 0x08 ) } );
   EXPECT_EQ( gpio.bitSet(), PL_STATUS_OK );
   ham.expectBatch( { write8( 16, 0xF7 ) } );
   EXPECT_EQ( gpio.bitClear(), PL_STATUS_OK );
}

TEST_F( RegGpioTest, ClearsWithABitPositionModulo32 ) {
   RegGpio wrapped( &device, bitOf( "1", "35" ) );
   ham.expectBatch( { read8( 1 ).answers( { 0xFF } ) } );
   ham.expectBatch( { write8( 1, 0xF7 ) } );
   EXPECT_EQ( wrapped.bitClear(), PL_STATUS_OK );
   RegGpio beyond( &device, bitOf( "1", "8" ) );
   ham.expectBatch( { read8( 1 ).answers( { 0xFF } ) } );
   ham.expectBatch( { write8( 1, 0xFF ) } );
   EXPECT_EQ( beyond.bitClear(), PL_STATUS_OK );
}

TEST_F( RegGpioTest, RegisterAndBitAreDecimal ) {
   RegGpio hex( &device, bitOf( "0x10", "3" ) );
   EXPECT_EQ( hex.reg, 0 ); // the number stops before the x
   EXPECT_EQ( gpio.reg, 16 );
   EXPECT_EQ( gpio.bitpos, 3 );
   EXPECT_THROW( RegGpio( &device, bitOf( "x", "3" ) ), std::invalid_argument );
   EXPECT_THROW( RegGpio( &device, bitOf( "99999999999", "3" ) ), std::out_of_range );
}

TEST_F( RegGpioTest, AMissingArgumentStopsTheProcess ) {
   Drivers::DriverArgs args = bitOf( "1", "1" );
   args.driverArgs.erase( "bitpos" );
   const auto complaint =
      ::testing::AllOf( ::testing::HasSubstr( "OrbisGeneric/Components/Gpio.cpp" ),
                        ::testing::HasSubstr( "Assertion `it != args.driverArgs.end()' failed" ) );
   EXPECT_DEATH( RegGpio( &device, args ), complaint );
   args.driverArgs = { { "bitpos", "1" } };
   EXPECT_DEATH( RegGpio( &device, args ), complaint );
}

TEST_F( RegGpioTest, AHostUsesTheLineThroughItsRecord ) {
   const pl_gpio_ops &ops = *gpio.record_.ops;
   EXPECT_EQ( ops.size, sizeof( pl_gpio_ops ) );
   ham.expectBatch( { read8( 16 ).answers( { 0 } ) } );
   ham.expectBatch( { write8( 16, 0x08 ) } );
   EXPECT_EQ( ops.bit_set( &gpio.record_ ), PL_STATUS_OK );
   EXPECT_EQ( TestHost::traces.back(), ( TestHost::Trace{ 4, "bitSetCallback" } ) );
   ham.expectBatch( { read8( 16 ).answers( { 0xFF } ) } );
   ham.expectBatch( { write8( 16, 0xF7 ) } );
   EXPECT_EQ( ops.bit_clear( &gpio.record_ ), PL_STATUS_OK );
   EXPECT_EQ( TestHost::traces.back(), ( TestHost::Trace{ 4, "bitClearCallback" } ) );
   ham.expectBatch( { read8( 16 ).answers( { 0x08 } ) } );
   EXPECT_EQ( ops.bit_read( &gpio.record_, &value ), PL_STATUS_OK );
   EXPECT_EQ( TestHost::traces.back(), ( TestHost::Trace{ 4, "bitReadCallback" } ) );
   EXPECT_EQ( value, 1u );
}

TEST_F( RegGpioTest, TheHostsFlagFollowsTheRecord ) {
   const auto *record = reinterpret_cast<const char *>( &gpio.record_ );
   EXPECT_EQ( reinterpret_cast<const char *>( &gpio.hostFlag_ ) - record,
              static_cast<ptrdiff_t>( sizeof( pl_gpio ) ) );
   EXPECT_FALSE( gpio.hostFlag_ );
}

TEST_F( RegGpioTest, AnyHardwareDeviceMakesRegisterGpios ) {
   connect( i2cTopology( "{'did':1}" ) );
   const char *document = json( "{'did':1,'driver':'Dummy','address':{'address':72},"
                                "'driverArgs':{'register':'16','bitpos':'3'}}" );
   pl_gpio *first = pl_gpio_add( document ), *second = pl_gpio_add( document );
   ASSERT_NE( first, nullptr );
   EXPECT_NE( first, second );
   FakeServer::answersWith( { "\x08" } );
   EXPECT_EQ( first->ops->bit_read( first, &value ), PL_STATUS_OK );
   EXPECT_EQ( value, 1u );
   EXPECT_TRUE( FakeServer::lastInWords()[0].starts_with( "read 0x48 reg 0x10 " ) );
}

} // namespace
