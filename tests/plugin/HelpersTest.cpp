#include "OrbisGeneric/Drivers/Helpers.h"
#include "OrbisGeneric/Components/Gpio.h"
#include "OrbisGeneric/Drivers/Dummy.h"
#include "OrbisGeneric/Drivers/LM75.h"
#include "OrbisGeneric/Ham/OrbisSmbusHam.h"
#include "OrbisGeneric/Topology.h"
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
   ASSERT_NE( device->ham_, nullptr );
   EXPECT_EQ( static_cast<Ham::OrbisSmbusHam *>( device->ham_ )->getAddress(), 9 );
   EXPECT_EQ( getHardwareDeviceByLabel( "Cpld", "LM75" ), device ); // made once
}

TEST_F( HelpersTest, TheNewRecordKeepsItsDriverAndIsNotInTheTree ) {
   getHardwareDeviceByLabel( "Cpld", "Dummy" );
   getHardwareDeviceByLabel( "Cpld", "LM75" );
   EXPECT_EQ( Topology::argumentsOf( "Cpld" ).driver, "Dummy" );
   EXPECT_EQ( Topology::argumentsOf( "Cpld" ).did, 1u );
   EXPECT_EQ( Topology::argumentsOf( "Cpld" ).uid, noComponent );
   EXPECT_EQ( Topology::getDeviceByLabel( "Cpld" )->args, nullptr );
}

TEST_F( HelpersTest, TheNewRecordEndsWithItsTree ) {
   getHardwareDeviceByLabel( "Cpld", "Dummy" );
   load( i2cTopology( "{'did':4,'label':'Cpld','address':{'address':17}}" ) );
   const DriverArgs &args = Topology::argumentsOf( "Cpld" );
   EXPECT_EQ( args.driver, "" );
   EXPECT_EQ( args.did, 4u );
   EXPECT_EQ( args.address.address, 17u );
}

TEST_F( HelpersTest, ADeviceWithoutDriverAndAddressStopsTheProcessAtItsLookUp ) {
   load( i2cTopology( "{'did':5,'label':'Bare'}" ) );
   EXPECT_DEATH( getHardwareDeviceByLabel( "Bare", "Dummy" ), "Assertion `!address.empty\\(\\)" );
}

// The loader ignores keys that it does not know.
TEST_F( HelpersTest, AnAddressThatIsNotOneStopsTheProcessOnlyAtItsLookUp ) {
   load( i2cTopology( "{'did':5,'label':'Odd','address':'0x50'}" ) );
   EXPECT_DEATH( getHardwareDeviceByLabel( "Odd", "Dummy" ), "Assertion `value.IsObject\\(\\)'" );
}

// A device of the same label that comes later hides the one before, with its address.
TEST_F( HelpersTest, TheAddressIsThatOfTheDeviceThatTheLabelNames ) {
   load( i2cTopology( "{'did':5,'label':'Twice','address':{'address':80}},"
                      "{'did':6,'label':'Twice','address':{'address':81}}" ) );
   EXPECT_EQ( Topology::argumentsOf( "Twice" ).address.address, 81u );
   load( i2cTopology( "{'did':5,'label':'Twice','address':{'address':80}},"
                      "{'did':6,'label':'Twice'}" ) );
   EXPECT_DEATH( Topology::argumentsOf( "Twice" ), "Assertion `!address.empty" );
}

// Its record is of no use for a mux: the chip would be selected at a guessed address.
TEST_F( HelpersTest, AMuxChipWithoutDriverStopsTheProcessAfterALookUpByLabel ) {
   load( "[{'type':'I2C','ham':'OrbisSmbus','bus':{'id':0,"
         "'devices':[{'did':5,'label':'Chip','address':{'address':112}}],"
         "'muxes':[{'did':5,'busses':[{'id':1,'devices':[{'did':6}]}]}]}}]" );
   getHardwareDeviceByLabel( "Chip", "PCA9548" );
   EXPECT_DEATH(
      pl_temp_sensor_add( json( "{'did':6,'driver':'LM75','address':{'address':72}}" ), 1, 2 ),
      "Device 5 isn't declared inline(.|\n)*Assertion `topoDev->args' failed" );
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
