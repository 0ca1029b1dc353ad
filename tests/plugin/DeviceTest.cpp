// Driver objects: one for each device id, shared, and the objects that a driver does not make.
#include "OrbisGeneric/Components/Fan.h"
#include "OrbisGeneric/Drivers/Drivers.h"
#include "OrbisGeneric/Drivers/Dummy.h"
#include "OrbisGeneric/Ham/Ham.h"
#include "support/MessageOf.h"
#include "support/PluginFixture.h"

namespace {

using Component::DeviceBase;
using Component::HardwareDevice;
using Component::MultiDevice;

class DeviceTest : public PluginFixture {
 protected:
   DeviceTest() { connect( i2cTopology( "{'did':1},{'did':2}" ) ); }

   static const char *document( unsigned did, const std::string &driver ) {
      return json( "{'did':" + std::to_string( did ) + ",'driver':'" + driver +
                   "','address':{'address':72}}" );
   }
   Drivers::DriverArgs args;
};

TEST_F( DeviceTest, MakesADriverObjectWithItsHamAndRegistersIt ) {
   auto *device =
      static_cast<HardwareDevice *>( DeviceBase::create( document( 1, "Dummy" ), args ) );
   ASSERT_NE( device, nullptr );
   EXPECT_NE( device->ham_, nullptr );
   EXPECT_EQ( device->driverData_, nullptr );
   EXPECT_EQ( DeviceBase::devices.at( 1 ), device );
   EXPECT_EQ( args.did, 1u );
   EXPECT_EQ(
      TestHost::tracedAt( 0 ),
      ( std::vector<std::string>{
         std::string( "parsing devArgs = " ) + document( 1, "Dummy" ),
         "looking for already existing device 1", "creating Ham",
         "looking for component 4294967295 of device 1 in topology",
         "creating OrbisSmbus HAM using topology information", "creating HardwareDevice Dummy",
         "calling factory function for Dummy", "Dummy device created" } ) );
}

TEST_F( DeviceTest, AnotherDriverForTheSameDeviceIdGetsTheFirstObject ) {
   auto *first = DeviceBase::create( document( 1, "Dummy" ), args );
   TestHost::traces.clear();
   Drivers::DriverArgs second;
   EXPECT_EQ( DeviceBase::create( document( 1, "LM75" ), second ), first );
   EXPECT_TRUE( TestHost::traced( 0, "using previously instanciated HardwareDevice LM75" ) );
}

TEST_F( DeviceTest, AnUnknownDriverRegistersNothingSoALaterAddCanSucceed ) {
   EXPECT_EQ( DeviceBase::create( document( 1, "Nobody" ), args ), nullptr );
   EXPECT_TRUE( TestHost::traced( 0, "driver Nobody not found" ) );
   EXPECT_TRUE( TestHost::traced( 0, "factory function returned a null object" ) );
   EXPECT_TRUE( DeviceBase::devices.empty() );
   EXPECT_NE( DeviceBase::create( document( 1, "Dummy" ), args ), nullptr );
}

TEST_F( DeviceTest, ADeviceThatIsNotInTheTopologyHasNoAccessMethod ) {
   EXPECT_EQ( DeviceBase::create( document( 9, "Dummy" ), args ), nullptr );
   EXPECT_EQ( TestHost::tracedAt( 0 ).back(), "failed to create Ham" );
}

TEST_F( DeviceTest, TextThatIsNotJsonMakesNothing ) {
   EXPECT_EQ( DeviceBase::create( "{", args ), nullptr );
   EXPECT_EQ( TestHost::tracedAt( 0 ).back(), "failed to parse json object as a device" );
}

TEST_F( DeviceTest, UsesTheHamOfTheCaller ) {
   args.driver = "Dummy";
   args.did = 77; // not in the topology, so no Ham could be made
   auto *ham = reinterpret_cast<Ham::Ham *>( 0x40 );
   EXPECT_EQ( HardwareDevice::create( args, ham )->ham_, ham );
}

struct InitCounter : HardwareDevice {
   void init() override {
      ++inits;
      registeredAtInit = devices.count( 1 );
      hamAtInit = ham_;
   }
   int inits = 0;
   bool registeredAtInit = true;
   Ham::Ham *hamAtInit = nullptr;
};

TEST_F( DeviceTest, InitRunsOnceAfterTheFactoryAndBeforeTheRegistry ) {
   InitCounter device;
   Drivers::drivers["test"] = [&]( auto &, auto * ) { return &device; };
   DeviceBase::create( document( 1, "test" ), args );
   DeviceBase::create( document( 1, "test" ), args );
   EXPECT_EQ( device.inits, 1 );
   EXPECT_FALSE( device.registeredAtInit );
   EXPECT_NE( device.hamAtInit, nullptr );
   Drivers::drivers.erase( "test" );
}

TEST_F( DeviceTest, TheHamReplacesOneThatTheFactorySet ) {
   InitCounter device;
   device.ham_ = reinterpret_cast<Ham::Ham *>( 0x80 );
   Drivers::drivers["test"] = [&]( auto &, auto * ) { return &device; };
   args.driver = "test";
   auto *ham = reinterpret_cast<Ham::Ham *>( 0x40 );
   EXPECT_EQ( HardwareDevice::create( args, ham )->ham_, ham );
   Drivers::drivers.erase( "test" );
}

TEST_F( DeviceTest, AnUnsupportedObjectThrowsItsName ) {
   Drivers::Dummy dummy;
   EXPECT_EQ( messageOf( [&] { dummy.newTempSensor( args ); } ), "Not implemented newTempSensor" );
   EXPECT_EQ( messageOf( [&] { dummy.newSlot( args ); } ), "Not implemented newSlot" );
   EXPECT_EQ( messageOf( [&] { dummy.newSfpXcvr( 1, args ); } ), "Not implemented newSfpXcvr" );
   EXPECT_EQ( messageOf( [&] { dummy.newQsfpXcvr( 1, args ); } ), "Not implemented newQsfpXcvr" );
   EXPECT_EQ( messageOf( [&] { dummy.newLed( args ); } ), "Not implemented newLed" );
   EXPECT_EQ( messageOf( [&] { dummy.newFan( args ); } ), "Not implemented newFan" );
   EXPECT_EQ( messageOf( [&] { dummy.newMux( args, 1 ); } ), "Not implemented newMux" );
   EXPECT_EQ( messageOf( [&] { dummy.newPsu( args ); } ), "Not implemented newPsu" );
   EXPECT_EQ( messageOf( [&] { dummy.newSmbusProxy( args ); } ), "Not implemented newSmbusProxy" );
}

TEST_F( DeviceTest, TheHostGetsTheExceptionOfAnUnsupportedObject ) {
   EXPECT_EQ( messageOf( [] { pl_fan_add( document( 1, "Dummy" ) ); } ), "Not implemented newFan" );
   EXPECT_EQ( DeviceBase::devices.count( 1 ), 1u );
}

// A composite that adds its sub-devices in init() and makes no objects.
struct Composite : MultiDevice {
   void init() override {
      ++inits;
      registeredAtInit = devices.count( 500 );
      inlet = addFan( "inlet" );
      missing = addFan( "outlet" );
      slot = addSlot( "x" );
      led = addLed( "x" );
      psu = addPsu( "x" );
   }
   int inits = 0;
   bool registeredAtInit = true;
   pl_fan *inlet = nullptr, *missing = nullptr;
   pl_slot *slot = nullptr;
   pl_led *led = nullptr;
   pl_psu *psu = nullptr;
};

struct TestFan : Component::LogicalDevice::Fan {
   pl_status getRpm( int * ) override { return PL_STATUS_OK; }
   pl_status setRpm( int ) override { return PL_STATUS_OK; }
};

struct FanDriver : HardwareDevice {
   Component::LogicalDevice::Fan *newFan( const Drivers::DriverArgs & ) override { return &fan; }
   TestFan fan;
};

class CompositeTest : public DeviceTest {
 protected:
   CompositeTest() {
      Drivers::drivers["composite"] = [this]( auto &, Ham::Ham *ham ) {
         EXPECT_EQ( ham, nullptr );
         ++factoryCalls;
         return &composite;
      };
      Drivers::drivers["fan"] = [this]( auto &, auto * ) { return &fanDriver; };
   }
   ~CompositeTest() override {
      Drivers::drivers.erase( "composite" );
      Drivers::drivers.erase( "fan" );
   }
   DeviceBase *add() {
      return DeviceBase::create(
         json( "{'did':500,'driver':'composite','address':{'address':0},'isMultiDevice':true,"
               "'multiDeviceArgs':{'inlet':'{\\'did\\':1,\\'driver\\':\\'fan\\',"
               "\\'address\\':{\\'address\\':1}}','x':'nonsense'}}" ),
         args );
   }
   Composite composite;
   FanDriver fanDriver;
   int factoryCalls = 0;
};

TEST_F( CompositeTest, IsMadeWithoutAnAccessMethodAndRegistered ) {
   EXPECT_EQ( add(), &composite );
   EXPECT_EQ( DeviceBase::devices.at( 500 ), &composite );
   EXPECT_TRUE( TestHost::traced( 0, "composite MultiDevice created" ) );
   EXPECT_FALSE( composite.registeredAtInit );
   EXPECT_EQ( add(), &composite );
   EXPECT_EQ( factoryCalls, 1 );
   EXPECT_EQ( composite.inits, 1 );
}

TEST_F( CompositeTest, AddsItsSubDevicesThroughTheExportedFunctions ) {
   add();
   EXPECT_EQ( composite.inlet, &fanDriver.fan.record_ );
   EXPECT_EQ( composite.fans_, std::vector<pl_fan *>{ composite.inlet } );
}

TEST_F( CompositeTest, SkipsASubDeviceWhoseKeyIsMissing ) {
   ASSERT_NE( add(), nullptr );
   EXPECT_EQ( composite.missing, nullptr );
   EXPECT_TRUE( TestHost::traced( 0, "Failed to find driverArgs for driver key 'outlet'" ) );
}

TEST_F( CompositeTest, ListsASubDeviceThatCouldNotBeMade ) {
   add();
   EXPECT_EQ( composite.slots_, std::vector<pl_slot *>{ nullptr } );
   EXPECT_EQ( composite.leds_, std::vector<pl_led *>{ nullptr } );
   EXPECT_EQ( composite.psus_, std::vector<pl_psu *>{ nullptr } );
}

TEST_F( CompositeTest, ReturnsTheStoredTextUnchanged ) {
   composite.deviceDriverArgsIs( { { "a", " {text} " } } );
   EXPECT_STREQ( composite.getDeviceDriverArg( "a" ), " {text} " );
   EXPECT_EQ( composite.getDeviceDriverArg( "b" ), nullptr );
}

TEST_F( CompositeTest, MakesNoGpio ) {
   add();
   EXPECT_EQ( messageOf( [] {
                 pl_gpio_add( json( "{'did':500,'driver':'composite','address':{'address':0},"
                                    "'isMultiDevice':true,'multiDeviceArgs':{}}" ) );
              } ),
              "Not implemented newGpio" );
}

TEST_F( CompositeTest, AFactoryWithoutAResultGivesNull ) {
   Drivers::drivers["composite"] = []( auto &, auto * ) { return nullptr; };
   EXPECT_EQ( add(), nullptr );
   EXPECT_EQ( TestHost::tracedAt( 0 ).back(), "factory function returned a null object" );
}

// Only the device id decides, so a document gets an object of the other kind. The object is used as
// what both kinds are.
TEST_F( CompositeTest, APlainDocumentOnTheIdOfACompositeGetsTheComposite ) {
   add();
   Drivers::DriverArgs plain;
   EXPECT_EQ( DeviceBase::create( document( 500, "Dummy" ), plain ), &composite );
   EXPECT_EQ( messageOf( [] { pl_fan_add( document( 500, "Dummy" ) ); } ),
              "Not implemented newFan" );
}

TEST_F( CompositeTest, ACompositesDocumentOnTheIdOfASingleDeviceGetsTheDevice ) {
   auto *single = DeviceBase::create( document( 1, "fan" ), args );
   Drivers::DriverArgs other;
   EXPECT_EQ( DeviceBase::create( json( "{'did':1,'driver':'composite','address':{'address':0},"
                                        "'isMultiDevice':true,'multiDeviceArgs':{}}" ),
                                  other ),
              single );
}

TEST_F( CompositeTest, WhereASingleDeviceIsNeededACompositeStopsTheProcess ) {
   add();
   EXPECT_DEATH( HardwareDevice::create( args, nullptr ), "Assertion `device && " );
}

TEST_F( CompositeTest, AFlagThatDoesNotFitTheDriverStopsTheProcess ) {
   EXPECT_DEATH( DeviceBase::create( document( 1, "composite" ), args ), "Assertion `device && " );
   EXPECT_DEATH( DeviceBase::create( json( "{'did':1,'driver':'fan','address':{'address':0},"
                                           "'isMultiDevice':true,'multiDeviceArgs':{}}" ),
                                     args ),
                 "Assertion `device && " );
}

} // namespace
