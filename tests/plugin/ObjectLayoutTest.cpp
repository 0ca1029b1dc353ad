// The fields of the records for the host, and of the objects that contain them.
#include "OrbisGeneric/Components/SmbusProxy.h"
#include "OrbisGeneric/Drivers/DualFan.h"
#include "OrbisGeneric/Drivers/EMC2305.h"
#include "OrbisGeneric/Drivers/GenericSmbusMux.h"
#include "OrbisGeneric/Drivers/Kelt/CelesticaCPLD.h"
#include "OrbisGeneric/Drivers/Kelt/CelesticaXcvr.h"
#include "OrbisGeneric/Drivers/Kelt/KeltPCA9506.h"
#include "OrbisGeneric/Drivers/LM75.h"
#include "OrbisGeneric/Drivers/Pmbus.h"
#include "OrbisGeneric/Drivers/PsuSlot.h"
#include "OrbisGeneric/Drivers/SmbusProxyDriver.h"
#include "support/Layout.h"
#include "support/NotedObjects.h"

using Drivers::CelXcvrCPLD;
using Drivers::GPIOExpander;
using Drivers::KeltPCA9506;
using PsuBay = Drivers::PsuSlot::Slot;

REVEAL( BayParent, PsuBay::parent_ );
REVEAL( BayFdl, PsuBay::fdl_ );
REVEAL( BaySerial, PsuBay::cachedSerial_ );
REVEAL( BayModel, PsuBay::cachedModel_ );
REVEAL( BayCachedFdl, PsuBay::cachedFdl_ );
REVEAL( BayIdentification, PsuBay::identificationType_ );
REVEAL( BayTemplates, PsuBay::templates_ );
REVEAL( CpldCache, CelXcvrCPLD::registerCache_ );
REVEAL( CpldMaps, CelXcvrCPLD::registerMaps_ );
REVEAL( CpldPoll, CelXcvrCPLD::poll_ );
REVEAL( CpldPortLeds, CelXcvrCPLD::portLeds_ );
REVEAL( CpldLedCpld, CelXcvrCPLD::Led::cpld_ );
REVEAL( CpldLedId, CelXcvrCPLD::Led::id_ );
REVEAL( CpldLedBlinking, CelXcvrCPLD::Led::blinking_ );
REVEAL( ExpanderInputTime, GPIOExpander::inputTime );
REVEAL( ExpanderInputValue, GPIOExpander::inputValue );
REVEAL( ExpanderPendingOut, GPIOExpander::pendingOut );
REVEAL( ExpanderNumBanks, GPIOExpander::numBanks );
REVEAL( ExpanderCacheSeconds, GPIOExpander::inputCacheSeconds );
REVEAL( ExpanderInputBase, GPIOExpander::inputBase );
REVEAL( ExpanderOutputBase, GPIOExpander::outputBase );
REVEAL( ExpanderConfigBase, GPIOExpander::configBase );
REVEAL( FanLedExpander, KeltPCA9506::FanLed::expander_ );
REVEAL( FanLedFan, KeltPCA9506::FanLed::fan_ );
REVEAL( FanLedBlinking, KeltPCA9506::FanLed::blinking_ );
REVEAL( FanLedPinA, KeltPCA9506::FanLed::pinA );
REVEAL( FanLedPinB, KeltPCA9506::FanLed::pinB );
REVEAL( FanSlotExpander, KeltPCA9506::FanSlot::expander_ );
REVEAL( FanSlotFanId, KeltPCA9506::FanSlot::fanId_ );
REVEAL( FanSlotFdl, KeltPCA9506::FanSlot::fdl_ );
REVEAL( FanSlotPresencePin, KeltPCA9506::FanSlot::presencePin );
REVEAL( FanSlotAirflowPin, KeltPCA9506::FanSlot::airflowPin );
REVEAL( FanSlotCachedFdl, KeltPCA9506::FanSlot::cachedFdl_ );
REVEAL( FanSlotCachedAirflow, KeltPCA9506::FanSlot::cachedAirflow_ );

namespace {

template <class Record>
void expectRecord() {
   expectLayout(
      { FIELD( Record, reserved, 0 ), FIELD( Record, ops, 4 ), FIELD( Record, priv, 8 ) } );
   EXPECT_EQ( sizeof( Record ), 3 * sizeof( void * ) );
}

TEST( ObjectLayoutTest, HostRecords ) {
   expectRecord<pl_slot>();
   expectRecord<pl_led>();
   expectRecord<pl_temp_sensor>();
   expectRecord<pl_fan>();
   expectRecord<pl_psu>();
   expectRecord<pl_gpio>();
   expectRecord<pl_xcvr>();
   expectRecord<pl_smbus>();
   expectLayout( { FIELD( pl_system, priv, 0 ), FIELD( pl_system, ops, 4 ) } );
   EXPECT_EQ( sizeof( pl_system ), 2 * sizeof( void * ) );
}

TEST( ObjectLayoutTest, HostTables ) {
   expectLayout( { FIELD( pl_slot_ops, size, 0 ), FIELD( pl_slot_ops, get_presence, 4 ) } );
   expectLayout( { FIELD( pl_led_ops, size, 0 ), FIELD( pl_led_ops, set_light_setting, 4 ) } );
   expectLayout( { FIELD( pl_temp_sensor_ops, size, 0 ), FIELD( pl_temp_sensor_ops, unused, 4 ),
                   FIELD( pl_temp_sensor_ops, get_temperature, 8 ) } );
   expectLayout( { FIELD( pl_fan_ops, size, 0 ), FIELD( pl_fan_ops, unused, 4 ),
                   FIELD( pl_fan_ops, get_rpm, 8 ), FIELD( pl_fan_ops, set_rpm, 12 ) } );
   expectLayout(
      { FIELD( pl_psu_ops, size, 0 ), FIELD( pl_psu_ops, unused, 4 ),
        FIELD( pl_psu_ops, get_power_ok, 8 ), FIELD( pl_psu_ops, get_input_current, 12 ),
        FIELD( pl_psu_ops, get_output_current, 16 ), FIELD( pl_psu_ops, get_input_voltage, 20 ),
        FIELD( pl_psu_ops, get_output_voltage, 24 ), FIELD( pl_psu_ops, get_input_power, 28 ),
        FIELD( pl_psu_ops, get_output_power, 32 ) } );
   expectLayout( { FIELD( pl_gpio_ops, size, 0 ), FIELD( pl_gpio_ops, bit_set, 4 ),
                   FIELD( pl_gpio_ops, bit_clear, 8 ), FIELD( pl_gpio_ops, bit_read, 12 ) } );
   expectLayout( { FIELD( pl_xcvr_ops, size, 0 ), FIELD( pl_xcvr_ops, kind, 4 ),
                   FIELD( pl_xcvr_ops, sfp, 8 ) } );
   expectLayout( { FIELD( pl_sfp_ops, size, 0 ), FIELD( pl_sfp_ops, get_presence, 4 ),
                   FIELD( pl_sfp_ops, get_tx_fault, 8 ), FIELD( pl_sfp_ops, get_rx_los, 12 ),
                   FIELD( pl_sfp_ops, get_tx_disable, 16 ),
                   FIELD( pl_sfp_ops, set_tx_disable, 20 ) } );
   expectLayout( { FIELD( pl_qsfp_ops, size, 0 ), FIELD( pl_qsfp_ops, get_presence, 4 ),
                   FIELD( pl_qsfp_ops, get_mod_sel, 8 ), FIELD( pl_qsfp_ops, set_mod_sel, 12 ),
                   FIELD( pl_qsfp_ops, get_lp_mode, 16 ), FIELD( pl_qsfp_ops, set_lp_mode, 20 ),
                   FIELD( pl_qsfp_ops, get_reset, 24 ), FIELD( pl_qsfp_ops, set_reset, 28 ),
                   FIELD( pl_qsfp_ops, get_interrupt, 32 ) } );
   expectLayout(
      { FIELD( pl_smbus_ops, size, 0 ), FIELD( pl_smbus_ops, quick_command, 4 ),
        FIELD( pl_smbus_ops, receive_byte, 8 ), FIELD( pl_smbus_ops, send_byte, 12 ),
        FIELD( pl_smbus_ops, read_byte, 16 ), FIELD( pl_smbus_ops, write_byte, 20 ),
        FIELD( pl_smbus_ops, read_word, 24 ), FIELD( pl_smbus_ops, write_word, 28 ),
        FIELD( pl_smbus_ops, block_read, 32 ), FIELD( pl_smbus_ops, block_write, 36 ),
        FIELD( pl_smbus_ops, i2c_block_read, 40 ), FIELD( pl_smbus_ops, i2c_block_write, 44 ),
        FIELD( pl_smbus_ops, process_call, 48 ), FIELD( pl_smbus_ops, block_process_call, 52 ) } );
   expectLayout( { FIELD( pl_system_ops, size, 0 ), FIELD( pl_system_ops, poweroff, 4 ),
                   FIELD( pl_system_ops, powercycle, 8 ),
                   FIELD( pl_system_ops, get_reload_cause, 12 ) } );
}

TEST( ObjectLayoutTest, TheRecordOfAnObjectFollowsTheTablePointer ) {
   using namespace Noted;
   expectLayout( { FIELD( Slot, record_, 4 ) } );
   expectLayout( { FIELD( Led, record_, 4 ), FIELD( Led, usesBlinkTimer, 16 ) } );
   expectLayout( { FIELD( TempSensor, record_, 4 ), FIELD( TempSensor, alertThreshold, 16 ),
                   FIELD( TempSensor, criticalThreshold, 20 ) } );
   expectLayout( { FIELD( Fan, record_, 4 ) } );
   expectLayout( { FIELD( Psu, record_, 4 ) } );
   expectLayout( { FIELD( Sfp, record_, 4 ), FIELD( Sfp, xcvrId_, 16 ) } );
   expectLayout( { FIELD( Qsfp, record_, 4 ), FIELD( Qsfp, xcvrId_, 16 ) } );
   expectLayout( { FIELD( Gpio, record_, 4 ), FIELD( Gpio, hostFlag_, 16 ) } );
   using Logical::RegGpio;
   expectLayout( { FIELD( RegGpio, hostFlag_, 16 ), FIELD( RegGpio, device, 20 ),
                   FIELD( RegGpio, writeOnly, 24 ), FIELD( RegGpio, reg, 28 ),
                   FIELD( RegGpio, bitpos, 32 ) } );
   using Drivers::SmbusProxyDriver;
   expectLayout( { FIELD( SmbusProxyDriver::SmbusProxy, record_, 4 ),
                   FIELD( SmbusProxyDriver::SmbusProxy, device_, 16 ) } );
}

TEST( ObjectLayoutTest, GenericDriverObjects ) {
   using Drivers::GenericSmbusMux, Drivers::LM75, Drivers::Pmbus;
   expectLayout(
      { FIELD( GenericSmbusMux::Mux, device_, 4 ), FIELD( GenericSmbusMux::Mux, value_, 8 ) } );
   expectLayout( { FIELD( LM75::TempSensor, criticalThreshold, 20 ),
                   FIELD( LM75::TempSensor, device_, 24 ) } );
   expectLayout( { FIELD( Pmbus::Psu, record_, 4 ), FIELD( Pmbus::Psu, pmbus_, 16 ) } );
   expectLayout( { FIELD( Pmbus::Fan, speedRegister_, 16 ),
                   FIELD( Pmbus::Fan, commandRegister_, 17 ), FIELD( Pmbus::Fan, pec, 18 ),
                   FIELD( Pmbus::Fan, pmbus_, 20 ), FIELD( Pmbus::Fan, index_, 24 ),
                   FIELD( Pmbus::Fan, maxFanRpm, 28 ) } );
   expectLayout( { FIELD( Pmbus::TempSensor, pmbus_, 24 ), FIELD( Pmbus::TempSensor, id_, 28 ),
                   FIELD( Pmbus::TempSensor, reg_, 29 ) } );
   expectLayout( { REVEALED( PsuBay, BayParent, 48 ), REVEALED( PsuBay, BayFdl, 52 ),
                   REVEALED( PsuBay, BaySerial, 104 ), REVEALED( PsuBay, BayModel, 128 ),
                   REVEALED( PsuBay, BayCachedFdl, 152 ),
                   REVEALED( PsuBay, BayIdentification, 156 ),
                   REVEALED( PsuBay, BayTemplates, 160 ) } );
}

TEST( ObjectLayoutTest, Fans ) {
   using Drivers::DualFan, Drivers::EMC2305;
   expectLayout( { FIELD( EMC2305::Fan, emc2305_, 16 ), FIELD( EMC2305::Fan, id_, 20 ),
                   FIELD( EMC2305::Fan, maxRpm_, 24 ), FIELD( EMC2305::Fan, fanSetting_, 28 ),
                   FIELD( EMC2305::Fan, fanConfig1_, 29 ), FIELD( EMC2305::Fan, tachLow_, 30 ),
                   FIELD( EMC2305::Fan, tachHigh_, 31 ),
                   FIELD( EMC2305::Fan, tachMultiplier_, 32 ) } );
   expectLayout( { FIELD( DualFan::Fan, dualFan_, 16 ), FIELD( DualFan::Fan, id_, 20 ),
                   FIELD( DualFan::Fan, maxRpm_, 24 ), FIELD( DualFan::Fan, maxDiff, 28 ),
                   FIELD( DualFan::Fan, inlet_, 32 ), FIELD( DualFan::Fan, outlet_, 36 ),
                   FIELD( DualFan::Fan, faults_, 40 ) } );
}

TEST( ObjectLayoutTest, TransceiverCpld ) {
   expectLayout( { FIELD( CelXcvrCPLD, pollInterval, 20 ), REVEALED( CelXcvrCPLD, CpldCache, 24 ),
                   REVEALED( CelXcvrCPLD, CpldMaps, 48 ), REVEALED( CelXcvrCPLD, CpldPoll, 60 ),
                   REVEALED( CelXcvrCPLD, CpldPortLeds, 64 ) } );
   expectLayout(
      { FIELD( CelXcvrCPLD::CelXcvr, port_, 0 ), FIELD( CelXcvrCPLD::CelXcvr, registerIndex_, 1 ),
        FIELD( CelXcvrCPLD::CelXcvr, bitpos_, 2 ), FIELD( CelXcvrCPLD::CelXcvr, cpld_, 4 ) } );
   // The record is first, after the table pointer: the common base of both kinds has no virtual
   // table.
   expectLayout( { FIELD( CelXcvrCPLD::SfpXcvr, record_, 4 ),
                   FIELD( CelXcvrCPLD::SfpXcvr, xcvrId_, 16 ),
                   FIELD( CelXcvrCPLD::SfpXcvr, port_, 20 ) } );
   expectLayout( { FIELD( CelXcvrCPLD::QsfpXcvr, record_, 4 ),
                   FIELD( CelXcvrCPLD::QsfpXcvr, xcvrId_, 16 ),
                   FIELD( CelXcvrCPLD::QsfpXcvr, port_, 20 ) } );
   using CpldLed = CelXcvrCPLD::Led;
   expectLayout( { FIELD( CpldLed, usesBlinkTimer, 16 ), REVEALED( CpldLed, CpldLedCpld, 20 ),
                   REVEALED( CpldLed, CpldLedId, 24 ), REVEALED( CpldLed, CpldLedBlinking, 25 ) } );
}

TEST( ObjectLayoutTest, FanBoard ) {
   expectLayout( { REVEALED( KeltPCA9506, ExpanderInputTime, 12 ),
                   REVEALED( KeltPCA9506, ExpanderInputValue, 24 ),
                   REVEALED( KeltPCA9506, ExpanderPendingOut, 36 ),
                   REVEALED( KeltPCA9506, ExpanderNumBanks, 48 ),
                   REVEALED( KeltPCA9506, ExpanderCacheSeconds, 52 ),
                   REVEALED( KeltPCA9506, ExpanderInputBase, 56 ),
                   REVEALED( KeltPCA9506, ExpanderOutputBase, 57 ),
                   REVEALED( KeltPCA9506, ExpanderConfigBase, 58 ) } );
   using FanLed = KeltPCA9506::FanLed;
   expectLayout( { REVEALED( FanLed, FanLedExpander, 20 ), REVEALED( FanLed, FanLedFan, 24 ),
                   REVEALED( FanLed, FanLedBlinking, 25 ), REVEALED( FanLed, FanLedPinA, 28 ),
                   REVEALED( FanLed, FanLedPinB, 32 ) } );
   using FanSlot = KeltPCA9506::FanSlot;
   expectLayout(
      { REVEALED( FanSlot, FanSlotExpander, 48 ), REVEALED( FanSlot, FanSlotFanId, 52 ),
        REVEALED( FanSlot, FanSlotFdl, 56 ), REVEALED( FanSlot, FanSlotPresencePin, 108 ),
        REVEALED( FanSlot, FanSlotAirflowPin, 112 ), REVEALED( FanSlot, FanSlotCachedFdl, 116 ),
        REVEALED( FanSlot, FanSlotCachedAirflow, 120 ) } );
}

} // namespace
