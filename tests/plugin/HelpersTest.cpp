#include "OrbisGeneric/Drivers/Helpers.h"
#include "OrbisGeneric/Components/Gpio.h"
#include "OrbisGeneric/Drivers/Dummy.h"
#include "OrbisGeneric/Drivers/LM75.h"
#include "OrbisGeneric/Ham/OrbisSmbusHam.h"
#include "support/PluginFixture.h"

namespace {

using namespace Drivers;

TEST( TrimTest, RemovesSpacesAndTabsAtBothEnds ) {
   EXPECT_EQ( trim( "\t a b \t" ), "a b" );
   EXPECT_EQ( trim( " \t " ), "" );
   EXPECT_EQ( trim( "" ), "" );
   EXPECT_EQ( trim( " a\n" ), "a\n" );
   EXPECT_EQ( trim( "\ra " ), "\ra" );
}

class HelpersTest : public PluginFixture {
 protected:
   HelpersTest() {
      connect(
         i2cTopology( "{'did':1,'label':'Cpld','address':{'address':9}},{'did':2,'label':'Temp',"
                      "'driver':'LM75','address':{'address':72}}" ) );
   }
};

TEST_F( HelpersTest, ADeviceWithoutDriverGetsTheRequestedDriverAndANewRecord ) {
   auto *device = getHardwareDeviceByLabel( "Cpld", "Dummy" );
   EXPECT_NE( dynamic_cast<Dummy *>( device ), nullptr );
   EXPECT_NE( device->ham_, nullptr );
   EXPECT_EQ( getHardwareDeviceByLabel( "Cpld", "LM75" ), device ); // made once
}

TEST_F( HelpersTest, AnEmptyDriverNameIsReplacedAndTheOtherArgumentsAreUsed ) {
   load( i2cTopology( "{'did':3,'label':'Mixed','driver':'','address':{'address':80}}" ) );
   auto *device = getHardwareDeviceByLabel( "Mixed", "Dummy" );
   ASSERT_NE( dynamic_cast<Dummy *>( device ), nullptr );
   EXPECT_EQ( static_cast<Ham::OrbisSmbusHam *>( device->ham_ )->getAddress(), 80 );
}

TEST_F( HelpersTest, ADriverThatTheTopologyNamesWins ) {
   EXPECT_NE( dynamic_cast<LM75 *>( getHardwareDeviceByLabel( "Temp", "Dummy" ) ), nullptr );
}

TEST_F( HelpersTest, AnUnknownLabelOrDriverStopsTheProcess ) {
   EXPECT_DEATH( getHardwareDeviceByLabel( "Nobody", "Dummy" ),
                 "OrbisGeneric/Drivers/Helpers.cpp.*Assertion `topoDev' failed" );
   EXPECT_DEATH( getHardwareDeviceByLabel( "Cpld", "Nobody" ),
                 "driver Nobody not found(.|\n)*Assertion `device' failed" );
}

// Keeps the arguments of newGpio.
struct GpioRecorder : Dummy {
   Component::LogicalDevice::Gpio *newGpio( const DriverArgs &args ) override {
      asked = args.driverArgs;
      return Dummy::newGpio( args );
   }
   std::map<std::string, std::string> asked;
};

TEST_F( HelpersTest, ARegisterGpioGetsItsNumbersAsDecimalText ) {
   GpioRecorder device;
   std::unique_ptr<Component::LogicalDevice::Gpio> gpio( getRegGpioForDevice( &device, 258, 0 ) );
   EXPECT_EQ( device.asked,
              ( std::map<std::string, std::string>{ { "register", "258" }, { "bitpos", "0" } } ) );
}

TEST_F( HelpersTest, EveryCallMakesANewGpio ) {
   auto *first = getRegGpioForDevice( "Cpld", 258, 0 ),
        *second = getRegGpioForDevice( "Cpld", 258, 0 );
   EXPECT_NE( first, second );
   EXPECT_EQ( dynamic_cast<Component::LogicalDevice::RegGpio *>( first )->reg, 258 );
}

TEST_F( HelpersTest, AGpioByLabelUsesTheRequestedBit ) {
   FakeServer::answersWith( { std::string( 1, '\0' ) } );
   EXPECT_EQ( getRegGpioForDevice( "Cpld", 258, 5 )->bitSet(), PL_STATUS_OK );
   EXPECT_TRUE( FakeServer::lastInWords().at( 0 ).ends_with( "data 20" ) );
}

struct NoGpios : Dummy {
   Component::LogicalDevice::Gpio *newGpio( const DriverArgs & ) override { return nullptr; }
};

TEST_F( HelpersTest, AFailedGpioStopsTheProcess ) {
   NoGpios device;
   EXPECT_DEATH( getRegGpioForDevice( &device, 1, 1 ), "Assertion `gpio' failed" );
}

} // namespace
