// The virtual tables of the logical objects. Drivers that are compiled separately rely on the slot
// of each operation.
#include "OrbisGeneric/Components/Mux.h"
#include "OrbisGeneric/Components/SmbusProxy.h"
#include "OrbisGeneric/Drivers/GenericSmbusMux.h"
#include "OrbisGeneric/Drivers/Pmbus.h"
#include "support/NotedObjects.h"
#include "support/VirtualSlot.h"

#include <gtest/gtest.h>

namespace {

namespace Logical = Component::LogicalDevice;
using Noted::called;
using Noted::note;

class ObjectSlotsTest : public ::testing::Test {
 protected:
   // Calls an operation without arguments, or with a pointer that it does not use.
   static void expectGetter( void *object, size_t slot, const char *name ) {
      callSlot<pl_status, void *>( object, slot, nullptr );
      EXPECT_EQ( called, name ) << "slot " << slot;
   }
   static void expectSetter( void *object, size_t slot, const char *nameAndFive ) {
      callSlot<pl_status, int>( object, slot, 5 );
      EXPECT_EQ( called, nameAndFive ) << "slot " << slot;
   }
};

TEST_F( ObjectSlotsTest, Slot ) {
   Noted::Slot slot;
   EXPECT_TRUE( areDestructors<Noted::Slot>( 0, 1 ) );
   expectGetter( &slot, 2, "getPresence" );
}

TEST_F( ObjectSlotsTest, Led ) {
   Noted::Led led;
   EXPECT_TRUE( areDestructors<Noted::Led>( 0, 1 ) );
   EXPECT_TRUE( ( callSlot<bool, bool>( &led, 2, true ) ) );
   EXPECT_EQ( called, "blink true" );
   callSlot<pl_status, pl_led_status>( &led, 3, PL_LED_BAD );
   EXPECT_EQ( called, "led 3" );
}

TEST_F( ObjectSlotsTest, TempSensor ) {
   Noted::TempSensor sensor;
   EXPECT_TRUE( areDestructors<Noted::TempSensor>( 0, 1 ) );
   callSlot<void, float>( &sensor, 2, 70 );
   EXPECT_EQ( sensor.alertThreshold, 70 );
   callSlot<void, float>( &sensor, 3, 80 );
   EXPECT_EQ( sensor.criticalThreshold, 80 );
   EXPECT_EQ( sensor.alertThreshold, 70 );
   float celsius = 0;
   callSlot<pl_status>( &sensor, 4, &celsius );
   EXPECT_EQ( called, "getTemperature" );
   EXPECT_EQ( celsius, 1.5f );
}

TEST_F( ObjectSlotsTest, PowerSupplyTempSensor ) {
   Drivers::Pmbus::TempSensor sensor( nullptr, 2 );
   EXPECT_EQ( callSlot<uint8_t>( &sensor, 5 ), 2 );    // id
   EXPECT_EQ( callSlot<uint8_t>( &sensor, 6 ), 0x8E ); // reg
}

TEST_F( ObjectSlotsTest, Fan ) {
   Noted::Fan fan;
   EXPECT_TRUE( areDestructors<Noted::Fan>( 0, 1 ) );
   expectGetter( &fan, 2, "getRpm" );
   expectSetter( &fan, 3, "setRpm 5" );
}

TEST_F( ObjectSlotsTest, PowerSupplyWithoutDestructor ) {
   Noted::Psu psu;
   expectGetter( &psu, 0, "power_ok" );
   expectGetter( &psu, 1, "input_current" );
   expectGetter( &psu, 2, "output_current" );
   expectGetter( &psu, 3, "input_voltage" );
   expectGetter( &psu, 4, "output_voltage" );
   expectGetter( &psu, 5, "input_power" );
   expectGetter( &psu, 6, "output_power" );
}

TEST_F( ObjectSlotsTest, SfpTransceiver ) {
   Noted::Sfp sfp;
   EXPECT_TRUE( areDestructors<Noted::Sfp>( 0, 1 ) );
   EXPECT_EQ( callSlot<int>( &sfp, 2 ), 1 );
   EXPECT_EQ( called, "sfp getPresence" );
   expectGetter( &sfp, 3, "getTxFault" );
   expectGetter( &sfp, 4, "getRxLos" );
   expectGetter( &sfp, 5, "getTxDisable" );
   expectSetter( &sfp, 6, "setTxDisable 5" );
}

TEST_F( ObjectSlotsTest, QsfpTransceiver ) {
   Noted::Qsfp qsfp;
   EXPECT_TRUE( areDestructors<Noted::Qsfp>( 0, 1 ) );
   EXPECT_EQ( callSlot<int>( &qsfp, 2 ), 1 );
   EXPECT_EQ( called, "qsfp getPresence" );
   expectGetter( &qsfp, 3, "getModSel" );
   expectSetter( &qsfp, 4, "setModSel 5" );
   expectGetter( &qsfp, 5, "getLpMode" );
   expectSetter( &qsfp, 6, "setLpMode 5" );
   expectGetter( &qsfp, 7, "getReset" );
   expectSetter( &qsfp, 8, "setReset 5" );
   expectGetter( &qsfp, 9, "getInterrupt" );
}

TEST_F( ObjectSlotsTest, Gpio ) {
   Noted::Gpio gpio;
   EXPECT_TRUE( areDestructors<Noted::Gpio>( 0, 1 ) );
   expectGetter( &gpio, 2, "bitClear" ); // before bitSet; the host's table has the other order
   expectGetter( &gpio, 3, "bitSet" );
   expectGetter( &gpio, 4, "bitRead" );
}

struct NotedProxy : Logical::SmbusProxy {
   pl_status quickCommand( int ) override { return note( "quickCommand" ); }
   pl_status receiveByte( uint8_t * ) override { return note( "receiveByte" ); }
   pl_status sendByte( uint8_t ) override { return note( "sendByte" ); }
   pl_status readByte( uint8_t, uint8_t * ) override { return note( "readByte" ); }
   pl_status writeByte( uint8_t, uint8_t ) override { return note( "writeByte" ); }
   pl_status readWord( uint8_t, uint16_t * ) override { return note( "readWord" ); }
   pl_status writeWord( uint8_t, uint16_t ) override { return note( "writeWord" ); }
   pl_status blockRead( uint8_t, uint8_t *, unsigned * ) override { return note( "blockRead" ); }
   pl_status blockWrite( uint8_t, const uint8_t *, unsigned ) override {
      return note( "blockWrite" );
   }
   pl_status i2cBlockRead( uint8_t, uint8_t *, unsigned ) override {
      return note( "i2cBlockRead" );
   }
   pl_status i2cBlockWrite( uint8_t, const uint8_t *, unsigned ) override {
      return note( "i2cBlockWrite" );
   }
   pl_status processCall( uint8_t, uint16_t, uint16_t * ) override { return note( "processCall" ); }
   pl_status blockProcessCall( uint8_t, const uint8_t *, uint8_t, uint8_t *, uint8_t * ) override {
      return note( "blockProcessCall" );
   }
};

TEST_F( ObjectSlotsTest, SmbusProxyWithoutDestructor ) {
   NotedProxy proxy;
   const char *const names[] = { "quickCommand", "receiveByte",  "sendByte",      "readByte",
                                 "writeByte",    "readWord",     "writeWord",     "blockRead",
                                 "blockWrite",   "i2cBlockRead", "i2cBlockWrite", "processCall" };
   for ( size_t slot = 0; slot < std::size( names ); ++slot ) {
      callSlot<pl_status, int, void *, unsigned>( &proxy, slot, 0, nullptr, 0 );
      EXPECT_EQ( called, names[slot] ) << "slot " << slot;
   }
   callSlot<pl_status, uint8_t, const uint8_t *, uint8_t, uint8_t *, uint8_t *>(
      &proxy, 12, 0, nullptr, 0, nullptr, nullptr );
   EXPECT_EQ( called, "blockProcessCall" );
}

struct NotedMux : Logical::Mux {
   bool selectRequest( Ham::Ham * ) override { return note( "selectRequest" ) != PL_STATUS_OK; }
   bool resetRequest( Ham::Ham * ) override { return note( "resetRequest" ) != PL_STATUS_OK; }
   pl_status executeMuxRequest() override { return note( "executeMuxRequest" ); }
   Component::HardwareDevice *device() const override { return note( "device" ), nullptr; }
};

TEST_F( ObjectSlotsTest, Mux ) {
   NotedMux mux;
   EXPECT_TRUE( areDestructors<NotedMux>( 0, 1 ) );
   expectGetter( &mux, 2, "selectRequest" );
   expectGetter( &mux, 3, "resetRequest" );
   expectGetter( &mux, 4, "executeMuxRequest" );
   callSlot<void *>( &mux, 5 );
   EXPECT_EQ( called, "device" );

   Drivers::GenericSmbusMux driver;
   Drivers::GenericSmbusMux::Mux real( &driver, 1 );
   EXPECT_EQ( callSlot<void *>( &real, 5 ), &driver );
}

} // namespace
