#include "OrbisGeneric/Drivers/Drivers.h"
#include "OrbisGeneric/Ham/Ham.h"
#include "support/PluginTest.h"

namespace {

TEST( KeltTablesTest, HoldTheBoardsDrivers ) {
   std::vector<std::string> names;
   for ( const auto &[name, factory] : Drivers::drivers )
      names.push_back( name );
   EXPECT_EQ( names,
              ( std::vector<std::string>{ "Dummy", "LM75", "PCA9548", "SmbusProxyDriver" } ) );
}

TEST( KeltTablesTest, HoldOneAccessMethod ) {
   EXPECT_EQ( Ham::hams.size(), 1u );
   EXPECT_EQ( Ham::hams.count( "OrbisSmbus" ), 1u );
}

TEST( KeltTablesTest, EveryDriverOfTheseIsASingleDevice ) {
   Drivers::DriverArgs args;
   for ( const auto &[name, factory] : Drivers::drivers ) {
      std::unique_ptr<Component::HardwareDevice> device(
         dynamic_cast<Component::HardwareDevice *>( factory( args, nullptr ) ) );
      EXPECT_NE( device, nullptr ) << name;
   }
}

TEST_F( PluginTest, ADriverNameOfAnotherCaseIsNotFound ) {
   connect( i2cTopology( "{'did':1}" ) );
   const char *text = json( "{'did':1,'driver':'pca9548','address':{'address':112}}" );
   EXPECT_EQ( pl_gpio_add( text ), nullptr );
   EXPECT_TRUE( TestHost::traced( 0, "driver pca9548 not found" ) );
}

} // namespace
