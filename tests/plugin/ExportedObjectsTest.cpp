// The records for the host: each operation of a table calls the right function of its object.
#include "OrbisGeneric/Drivers/Drivers.h"
#include "support/NotedObjects.h"
#include "support/PluginFixture.h"

namespace {

namespace Logical = Component::LogicalDevice;

using Noted::called;

// A driver that makes one object of each kind, or nothing.
struct TestDriver : Component::HardwareDevice {
   using Args = Drivers::DriverArgs;
   Logical::Slot *newSlot( const Args & ) override { return give( slot ); }
   Logical::Led *newLed( const Args & ) override { return makes ? &leds[nextLed++] : nullptr; }
   Logical::TempSensor *newTempSensor( const Args & ) override { return give( temp ); }
   Logical::Fan *newFan( const Args & ) override { return give( fan ); }
   Logical::Psu *newPsu( const Args & ) override { return give( psu ); }
   Logical::SfpXcvr *newSfpXcvr( unsigned id, const Args & ) override {
      sfp.xcvrId_ = id;
      return give( sfp );
   }
   Logical::QsfpXcvr *newQsfpXcvr( unsigned id, const Args & ) override {
      qsfp.xcvrId_ = id;
      return give( qsfp );
   }
   Logical::SmbusProxy *newSmbusProxy( const Args & ) override { return nullptr; }
   template <typename Object>
   Object *give( Object &object ) {
      return makes ? &object : nullptr;
   }

   bool makes = true;
   Noted::Slot slot;
   Noted::Led leds[2];
   int nextLed = 0;
   Noted::TempSensor temp;
   Noted::Fan fan;
   Noted::Psu psu;
   Noted::Sfp sfp;
   Noted::Qsfp qsfp;
};

class ExportedObjectsTest : public PluginFixture {
 protected:
   ExportedObjectsTest() {
      connect( i2cTopology( "{'did':1},"
                            "{'did':3,'label':'Named','driver':'LM75','address':{'address':9}}" ) );
      Drivers::drivers["test"] = [this]( auto &, auto * ) { return &driver; };
      called.clear();
   }
   ~ExportedObjectsTest() override { Drivers::drivers.erase( "test" ); }

   static const char *document( const std::string &driverArgs = "" ) {
      return json( "{'did':1,'driver':'test','address':{'address':72},'driverArgs':{" + driverArgs +
                   "}}" );
   }
   // The call reached the object as `what`, returned its status, and was traced as `trace`.
   static void expectCall( pl_status status, const std::string &what, const std::string &trace ) {
      EXPECT_EQ( status, PL_STATUS_DEVICE_FAULT ) << what;
      EXPECT_EQ( called, what );
      EXPECT_EQ( TestHost::traces.back(), ( TestHost::Trace{ 4, trace } ) );
   }
   template <typename Record>
   static void expectRecord( const Record *record, const void *object ) {
      ASSERT_NE( record, nullptr );
      EXPECT_EQ( record->reserved, nullptr );
      EXPECT_EQ( record->priv, object );
      EXPECT_EQ( record->ops->size, sizeof( *record->ops ) );
      // The record is right after the object's virtual table pointer.
      EXPECT_EQ( reinterpret_cast<const char *>( record ) - static_cast<const char *>( object ),
                 static_cast<ptrdiff_t>( sizeof( void * ) ) );
      // A host may use offsets: first the table, which starts with its size, then the object.
      const auto *words = reinterpret_cast<const void *const *>( record );
      EXPECT_EQ( *static_cast<const uint32_t *>( words[1] ), sizeof( *record->ops ) );
      EXPECT_EQ( words[2], object );
   }
   // The object of a record that is right after the virtual table pointer.
   static const void *objectBefore( const void *record ) {
      return static_cast<const std::byte *>( record ) - sizeof( void * );
   }
   static std::string pointer( const void *record ) { return fmt::format( "({})", record ); }

   TestDriver driver;
   int integer = 0;
   float real = 0;
};

TEST_F( ExportedObjectsTest, Slot ) {
   pl_slot *slot = pl_slot_add( document() );
   expectRecord( slot, &driver.slot );
   char *fdl = nullptr;
   expectCall( slot->ops->get_presence( slot, &fdl ), "getPresence",
               "getPresenceCallback" + pointer( slot ) );
}

TEST_F( ExportedObjectsTest, LedsOfOneDriverShareOnlyTheirTable ) {
   pl_led *first = pl_led_add( document() ), *second = pl_led_add( document() );
   expectRecord( first, &driver.leds[0] );
   expectRecord( second, &driver.leds[1] );
   EXPECT_NE( first->priv, second->priv );
   EXPECT_EQ( first->ops, second->ops );
   expectCall( first->ops->set_light_setting( first, PL_LED_BEACON ), "led 6",
               fmt::format( "setLightSettingCallback({}, 6)", static_cast<void *>( first ) ) );
}

TEST_F( ExportedObjectsTest, TempSensorStoresItsThresholds ) {
   pl_temp_sensor *sensor = pl_temp_sensor_add( document(), 70.0f, 80.0f );
   expectRecord( sensor, &driver.temp );
   EXPECT_EQ( driver.temp.alertThreshold, 70.0f );
   EXPECT_EQ( driver.temp.criticalThreshold, 80.0f );
   EXPECT_TRUE( TestHost::traced( 0, "setting alert threshold" ) );
   EXPECT_TRUE( TestHost::traced( 0, "setting critical threshold" ) );
   EXPECT_EQ( sensor->ops->unused, nullptr );
   expectCall( sensor->ops->get_temperature( sensor, &real ), "getTemperature",
               "getTemperatureCallback" + pointer( sensor ) );
   EXPECT_EQ( real, 1.5f );
}

TEST_F( ExportedObjectsTest, Fan ) {
   pl_fan *fan = pl_fan_add( document() );
   expectRecord( fan, &driver.fan );
   EXPECT_EQ( fan->ops->unused, nullptr );
   expectCall( fan->ops->get_rpm( fan, &integer ), "getRpm", "getRpmCallback" + pointer( fan ) );
   expectCall( fan->ops->set_rpm( fan, -5 ), "setRpm -5",
               fmt::format( "setRpmCallback({}, -5)", static_cast<void *>( fan ) ) );
}

TEST_F( ExportedObjectsTest, Psu ) {
   pl_psu *psu = pl_psu_add( document() );
   expectRecord( psu, &driver.psu );
   const pl_psu_ops &ops = *psu->ops;
   EXPECT_EQ( ops.unused, nullptr );
   expectCall( ops.get_power_ok( psu, &integer ), "power_ok", "get_power_ok_callback" );
   expectCall( ops.get_input_current( psu, &real ), "input_current", "get_input_current_callback" );
   expectCall( ops.get_output_current( psu, &real ), "output_current",
               "get_output_current_callback" );
   expectCall( ops.get_input_voltage( psu, &real ), "input_voltage", "get_input_voltage_callback" );
   expectCall( ops.get_output_voltage( psu, &real ), "output_voltage",
               "get_output_voltage_callback" );
   expectCall( ops.get_input_power( psu, &real ), "input_power", "get_input_power_callback" );
   expectCall( ops.get_output_power( psu, &real ), "output_power", "get_output_power_callback" );
}

TEST_F( ExportedObjectsTest, SfpTransceiver ) {
   for ( const char *type : { "sfp", "sfp+" } ) {
      pl_xcvr *xcvr = pl_xcvr_add( document( std::string( "'id':3,'type':'" ) + type + "'" ) );
      expectRecord( xcvr, &driver.sfp );
      EXPECT_EQ( driver.sfp.xcvrId_, 3u );
      EXPECT_EQ( xcvr->ops->kind, 0u );
      const pl_sfp_ops &ops = xcvr->ops->sfp;
      EXPECT_EQ( ops.size, sizeof( pl_sfp_ops ) );
      EXPECT_EQ( ops.get_presence( xcvr ), 1 );
      EXPECT_EQ( called, "sfp getPresence" );
      EXPECT_TRUE( TestHost::traced( 4, "getPresenceCallback(3)" ) );
      expectCall( ops.get_tx_fault( xcvr, &integer ), "getTxFault", "getTxFaultCallback(3)" );
      expectCall( ops.get_rx_los( xcvr, &integer ), "getRxLos", "getRxLosCallback(3)" );
      expectCall( ops.get_tx_disable( xcvr, &integer ), "getTxDisable", "getTxDisableCallback(3)" );
      expectCall( ops.set_tx_disable( xcvr, 1 ), "setTxDisable 1", "setTxDisableCallback(3, 1)" );
      EXPECT_EQ( xcvr->ops->qsfp.get_reset, nullptr ); // null: an SFP has no such line
      EXPECT_EQ( xcvr->ops->qsfp.set_reset, nullptr );
      EXPECT_EQ( xcvr->ops->qsfp.get_interrupt, nullptr );
   }
}

TEST_F( ExportedObjectsTest, QsfpTransceiver ) {
   for ( const char *type : { "qsfp", "qsfp+" } ) {
      pl_xcvr *xcvr = pl_xcvr_add( document( std::string( "'id':32,'type':'" ) + type + "'" ) );
      expectRecord( xcvr, &driver.qsfp );
      EXPECT_EQ( driver.qsfp.xcvrId_, 32u );
      EXPECT_EQ( xcvr->ops->kind, 1u );
      const pl_qsfp_ops &ops = xcvr->ops->qsfp;
      EXPECT_EQ( ops.size, sizeof( pl_qsfp_ops ) );
      EXPECT_EQ( ops.get_presence( xcvr ), 1 );
      EXPECT_EQ( called, "qsfp getPresence" );
      EXPECT_EQ( TestHost::traces.back(), ( TestHost::Trace{ 4, "getPresenceCallback(32)" } ) );
      expectCall( ops.get_mod_sel( xcvr, &integer ), "getModSel", "getModSelCallback(32)" );
      expectCall( ops.set_mod_sel( xcvr, 1 ), "setModSel 1", "setModSelCallback(32, 1)" );
      expectCall( ops.get_lp_mode( xcvr, &integer ), "getLpMode", "getLpModeCallback(32)" );
      expectCall( ops.set_lp_mode( xcvr, 0 ), "setLpMode 0", "setLpModeCallback(32, 0)" );
      expectCall( ops.get_reset( xcvr, &integer ), "getReset", "getResetCallback(32)" );
      expectCall( ops.set_reset( xcvr, 1 ), "setReset 1", "setResetCallback(32, 1)" );
      expectCall( ops.get_interrupt( xcvr, &integer ), "getInterrupt", "getInterruptCallback(32)" );
   }
}

TEST_F( ExportedObjectsTest, Gpio ) {
   pl_gpio *gpio = pl_gpio_add( document( "'register':16,'bitpos':3" ) );
   expectRecord( gpio, objectBefore( gpio ) );
}

TEST_F( ExportedObjectsTest, SmbusProxy ) {
   pl_smbus *proxy = pl_smbus_add( "Named", 0 );
   expectRecord( proxy, objectBefore( proxy ) );
}

TEST_F( ExportedObjectsTest, ATransceiverIdMayBeInQuotes ) {
   ASSERT_NE( pl_xcvr_add( document( R"('id':'\"12\"','type':'sfp')" ) ), nullptr );
   EXPECT_EQ( driver.sfp.xcvrId_, 12u );
}

TEST_F( ExportedObjectsTest, ATransceiverWithoutIdOrTypeOrOfAnotherTypeStopsTheProcess ) {
   EXPECT_DEATH( pl_xcvr_add( document( "'type':'sfp'" ) ),
                 "0 No id argument given for Xcvr(.|\n)*OrbisGeneric/Components/Xcvr.*Assertion" );
   EXPECT_DEATH( pl_xcvr_add( document( "'id':1" ) ),
                 "0 No type argument given for Xcvr(.|\n)*Assertion `typeIt != " );
   EXPECT_DEATH( pl_xcvr_add( document( "'id':1,'type':'cfp'" ) ),
                 "0 Xcvr type cfp not supported(.|\n)*OrbisGeneric/Components/Xcvr.*Assertion" );
}

TEST_F( ExportedObjectsTest, AFailedObjectIsNullAndTraced ) {
   driver.makes = false;
   EXPECT_EQ( pl_slot_add( document() ), nullptr );
   EXPECT_TRUE( TestHost::traced( 0, "newSlot() failed" ) );
   EXPECT_EQ( pl_led_add( document() ), nullptr );
   EXPECT_TRUE( TestHost::traced( 0, "newLed() failed" ) );
   EXPECT_EQ( pl_fan_add( document() ), nullptr );
   EXPECT_TRUE( TestHost::traced( 0, "newFan() failed" ) );
   EXPECT_EQ( pl_psu_add( document() ), nullptr );
   EXPECT_TRUE( TestHost::traced( 0, "newPsu() failed" ) );
   EXPECT_EQ( pl_xcvr_add( document( "'id':1,'type':'sfp'" ) ), nullptr );
   EXPECT_TRUE( TestHost::traced( 0, "newSfpXcvr() failed" ) );
   EXPECT_EQ( pl_xcvr_add( document( "'id':1,'type':'qsfp'" ) ), nullptr );
   EXPECT_TRUE( TestHost::traced( 0, "newQsfpXcvr() failed" ) );
   EXPECT_EQ( pl_smbus_add( document(), 0 ), nullptr );
   EXPECT_TRUE( TestHost::traced( 0, "newSmbusProxy() failed" ) );
   TestHost::traces.clear();
   EXPECT_EQ( pl_temp_sensor_add( document(), 1, 2 ), nullptr );
   EXPECT_EQ( TestHost::tracedAt( 0 ).back(), "using previously instanciated HardwareDevice test" );
}

TEST_F( ExportedObjectsTest, AFailedDeviceIsNullAndTracedExceptForTempSensors ) {
   for ( auto add :
         { +[] { return ( void * )pl_slot_add( "" ); }, +[] { return ( void * )pl_led_add( "" ); },
           +[] { return ( void * )pl_fan_add( "" ); }, +[] { return ( void * )pl_psu_add( "" ); },
           +[] { return ( void * )pl_xcvr_add( "" ); }, +[] { return ( void * )pl_gpio_add( "" ); },
           +[] { return ( void * )pl_smbus_add( "{", 0 ); } } ) {
      TestHost::traces.clear();
      EXPECT_EQ( add(), nullptr );
      EXPECT_EQ( TestHost::tracedAt( 0 ).back(), "DeviceBase::create() failed" );
   }
   TestHost::traces.clear();
   EXPECT_EQ( pl_temp_sensor_add( "", 1, 2 ), nullptr );
   EXPECT_EQ( TestHost::tracedAt( 0 ).back(), "failed to parse json object as a device" );
}

} // namespace
