#include "smbus/RootBusId.h"

#include <gtest/gtest.h>

namespace BusTest {

namespace {

using namespace Bus;

TEST( RootBusIdTest, IgnoresPciAndAcceleratorWhereAMasterHasNeither ) {
   for ( const Master master : { Master::Simulated, Master::I2c, Master::IoPort } )
      EXPECT_EQ( rootBusId( master, 4, 1, 2 ), rootBusId( master, 0, 0, 2 ) );
}

TEST( RootBusIdTest, DistinguishesPciAndAcceleratorWhereAMasterHasThem ) {
   for ( const Master master : { Master::Scd, Master::Celestica } ) {
      EXPECT_NE( rootBusId( master, 4, 1, 2 ), rootBusId( master, 5, 1, 2 ) );
      EXPECT_NE( rootBusId( master, 4, 1, 2 ), rootBusId( master, 4, 3, 2 ) );
   }
   EXPECT_NE( rootBusId( Master::Scd, 4, 1, 2 ), rootBusId( Master::Celestica, 4, 1, 2 ) );
   EXPECT_NE( rootBusId( Master::I2c, 0, 0, 2 ), rootBusId( Master::Simulated, 0, 0, 2 ) );
}

TEST( RootBusIdTest, ParsesItsOwnText ) {
   for ( const char *text :
         { "sim:0", "i2c:127", "scd(4):1:2", "ioport:3", "celestica:1:2", "celestica(5):1:2" } ) {
      const auto id = parseRootBusId( text );
      ASSERT_TRUE( id ) << text;
      EXPECT_EQ( toString( *id ), text );
   }
}

TEST( RootBusIdTest, ParsesHexadecimalNumbers ) {
   EXPECT_EQ( parseRootBusId( "scd(0x4):0x1:0X2" ), rootBusId( Master::Scd, 4, 1, 2 ) );
}

TEST( RootBusIdTest, RefusesOtherTexts ) {
   for ( const char *text : { "", "i2c", "i2c:", "i2c:x", "i2c:-1", "i2c:128", "i2c:0:1",
                              "i2c(4):0", "scd:1:2", "scd(4):1", "scd(4:1:2", "scd():1:2",
                              "scd(4):128:2", "scd(4):1:2:3", "celestica:1", "I2C:0", "can:0" } )
      EXPECT_FALSE( parseRootBusId( text ) ) << text;
}

} // namespace

} // namespace BusTest
