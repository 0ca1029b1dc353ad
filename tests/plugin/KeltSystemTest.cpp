#include "OrbisGeneric/Drivers/Kelt/KeltSystem.h"
#include "OrbisGeneric/Components/Gpio.h"
#include "OrbisGeneric/Drivers/Drivers.h"
#include "OrbisGeneric/Topology.h"
#include "support/PluginFixture.h"

namespace {

class KeltSystemTest : public PluginFixture {
 protected:
   KeltSystemTest() {
      connect( i2cTopology( "{'did':1,'label':'Cpld','driver':'Dummy','address':{'address':98}},"
                            "{'did':2,'label':'Pca9506','driver':'KeltPCA9506',"
                            "'address':{'address':32}}" ) );
   }
   ~KeltSystemTest() override { delete system; }
   pl_system *system = pl_system_add( "{}" );
};

TEST_F( KeltSystemTest, EveryAddMakesANewRecordWithTheSameTable ) {
   pl_system *other = pl_system_add( "not looked at" );
   EXPECT_NE( system, other );
   EXPECT_EQ( system->ops, other->ops );
   EXPECT_EQ( system->ops, &ops );
   EXPECT_EQ( system->priv, nullptr );
   // A host may use offsets.
   const auto *words = reinterpret_cast<const void *const *>( system );
   EXPECT_EQ( words[0], nullptr );
   EXPECT_EQ( words[1], &ops );
   EXPECT_EQ( ops.size, sizeof( pl_system_ops ) );
   EXPECT_TRUE( TestHost::traced( 0, "pl_system_add( 'not looked at' )" ) );
   delete other;
}

TEST_F( KeltSystemTest, TheReloadCauseIsNotSupported ) {
   char cause[100] = "cause", description[500] = "description";
   long time = 77;
   EXPECT_EQ( system->ops->get_reload_cause( system, &cause, &time, &description ), 5 );
   EXPECT_STREQ( cause, "cause" );
   EXPECT_STREQ( description, "description" );
   EXPECT_EQ( time, 77 );
}

TEST_F( KeltSystemTest, APowerCycleSetsBit0OfRegister258AndKeepsTheOtherBits ) {
   FakeServer::answersWith( { "\x42" } );
   EXPECT_EQ( system->ops->powercycle( system ), PL_STATUS_OK );
   ASSERT_EQ( FakeServer::received.size(), 2u );
   const std::string path = " bus 0 accel 0 size 1 master 1 pci 0 len 1";
   EXPECT_EQ( FakeServer::inWords( FakeServer::received[0].request( 0 ) ),
              "read 0x62 reg 0x102" + path );
   EXPECT_EQ( FakeServer::inWords( FakeServer::received[1].request( 0 ) ),
              "write 0x62 reg 0x102" + path + " data 43" );
}

TEST_F( KeltSystemTest, AFailedPowerCycleReturnsItsStatus ) {
   FakeServer::answer = []( auto *, auto ** ) { return -1; };
   EXPECT_EQ( system->ops->powercycle( system ), 4 );
}

TEST_F( KeltSystemTest, APowerOffSetsThePinsOfTheFanBoard ) {
   FakeServer::answer = []( Smbus::TransactionRequest *request, auto **response ) {
      *response = new Smbus::TransactionResponse;
      for ( const auto &each : request->request() )
         ( *response )
            ->add_response()
            ->set_data( std::string( each.type() == Smbus::REQUEST_READ, 0 ) );
      return 0;
   };
   EXPECT_EQ( system->ops->poweroff( system ), PL_STATUS_OK );
   const std::string path = " bus 0 accel 0 size 1 master 1 pci 0 len 1";
   EXPECT_EQ( FakeServer::lastInWords(),
              ( std::vector<std::string>{ "write 0x20 reg 0xa" + path + " data 80",
                                          "write 0x20 reg 0xb" + path + " data 04" } ) );
}

TEST_F( KeltSystemTest, WithoutADriverInTheTopologyPoweringOffStopsTheProcess ) {
   load( i2cTopology( "{'did':2,'label':'Pca9506','address':{'address':32}}" ) );
   EXPECT_DEATH( system->ops->poweroff( system ),
                 "driver KeltPCA506 not found(.|\n)*Assertion `device' failed" );
}

TEST_F( KeltSystemTest, AnotherDriverUnderTheLabelOfTheExpanderStopsTheProcess ) {
   load( i2cTopology( "{'did':2,'label':'Pca9506','driver':'LM75','address':{'address':32}}" ) );
   EXPECT_DEATH( system->ops->poweroff( system ), "Assertion `expander' failed" );
}

TEST_F( KeltSystemTest, WithoutADriverTheCpldIsReachedAtItsAddress ) {
   load( i2cTopology( "{'did':1,'label':'Cpld','address':{'address':98}}" ) );
   FakeServer::answersWith( { "\x42" } );
   EXPECT_EQ( system->ops->powercycle( system ), PL_STATUS_OK );
   for ( const auto &request : FakeServer::received )
      EXPECT_TRUE( FakeServer::inWords( request.request( 0 ) ).find( " 0x62 reg 0x102" ) !=
                   std::string::npos );
}

TEST_F( KeltSystemTest, WithoutTheDevicesBothStopTheProcess ) {
   load( "[]" );
   EXPECT_DEATH( system->ops->powercycle( system ), "Assertion `topoDev' failed" );
   EXPECT_DEATH( system->ops->poweroff( system ), "Assertion `topoDev' failed" );
}

// Keeps the GPIOs that it makes.
struct GpioKeeper : Component::HardwareDevice {
   Component::LogicalDevice::Gpio *newGpio( const Drivers::DriverArgs &args ) override {
      made.push_back( HardwareDevice::newGpio( args ) );
      return made.back();
   }
   std::vector<Component::LogicalDevice::Gpio *> made;
};

TEST_F( KeltSystemTest, EveryPowerCycleMakesAGpioWhoseFlagIsSetForTheHost ) {
   GpioKeeper keeper;
   Drivers::drivers["test"] = [&]( auto &, auto * ) { return &keeper; };
   load( i2cTopology( "{'did':1,'label':'Cpld','driver':'test','address':{'address':98}}" ) );
   FakeServer::answersWith( { "x" } );
   EXPECT_EQ( system->ops->powercycle( system ), PL_STATUS_OK );
   EXPECT_EQ( system->ops->powercycle( system ), PL_STATUS_OK );
   ASSERT_EQ( keeper.made.size(), 2u );
   for ( auto *gpio : keeper.made ) {
      EXPECT_TRUE( gpio->hostFlag_ );
      // A host may use the offset: the byte after the three pointers of the record.
      const auto *record = reinterpret_cast<const uint8_t *>( &gpio->record_ );
      EXPECT_EQ( record[3 * sizeof( void * )], 1 );
      EXPECT_EQ( static_cast<void *>( gpio ), gpio->record_.priv );
      delete gpio;
   }
   Drivers::drivers.erase( "test" );
}

TEST_F( KeltSystemTest, TheFlagIsSetEvenWhenTheBusFails ) {
   GpioKeeper keeper;
   Drivers::drivers["test"] = [&]( auto &, auto * ) { return &keeper; };
   load( i2cTopology( "{'did':1,'label':'Cpld','driver':'test','address':{'address':98}}" ) );
   bool setByThen = false;
   FakeServer::answer = [&]( auto *, auto ** ) {
      setByThen = keeper.made.at( 0 )->hostFlag_;
      return -1;
   };
   EXPECT_EQ( system->ops->powercycle( system ), 4 );
   EXPECT_TRUE( setByThen );
   delete keeper.made.at( 0 );
   Drivers::drivers.erase( "test" );
}

TEST_F( KeltSystemTest, TheEntryPointTracesItsName ) {
   EXPECT_EQ( pl_system_init( "[]" ), PL_STATUS_OK );
   EXPECT_EQ( TestHost::tracedAt( 0 ).at( 0 ), "pl_system_init" );
}

} // namespace
