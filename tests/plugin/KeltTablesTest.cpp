#include "OrbisGeneric/Drivers/Drivers.h"
#include "OrbisGeneric/Ham/Ham.h"
#include "support/PluginFixture.h"

namespace {

class KeltTablesTest : public PluginFixture {};

TEST_F( KeltTablesTest, HoldOneAccessMethod ) {
   EXPECT_EQ( Ham::hams.size(), 1u );
   EXPECT_EQ( Ham::hams.count( "OrbisSmbus" ), 1u );
}

TEST_F( KeltTablesTest, EveryDriverButDualFanIsASingleDevice ) {
   Drivers::DriverArgs args;
   for ( const auto &[name, factory] : Drivers::drivers ) {
      auto *device = factory( args, nullptr );
      auto *single = dynamic_cast<Component::HardwareDevice *>( device );
      auto *composite = dynamic_cast<Component::MultiDevice *>( device );
      EXPECT_EQ( composite != nullptr, name == "DualFan" );
      EXPECT_EQ( single != nullptr, name != "DualFan" );
      delete single;
      delete composite;
   }
}

TEST_F( KeltTablesTest, ADriverNameOfAnotherCaseIsNotFound ) {
   connect( i2cTopology( "{'did':1}" ) );
   const char *text = json( "{'did':1,'driver':'pca9548','address':{'address':112}}" );
   EXPECT_EQ( pl_gpio_add( text ), nullptr );
   EXPECT_TRUE( TestHost::traced( 0, "driver pca9548 not found" ) );
}

} // namespace
