// Logical objects that record the last call and its arguments.
#pragma once

#include "OrbisGeneric/Components/Fan.h"
#include "OrbisGeneric/Components/Gpio.h"
#include "OrbisGeneric/Components/Led.h"
#include "OrbisGeneric/Components/Psu.h"
#include "OrbisGeneric/Components/Slot.h"
#include "OrbisGeneric/Components/TempSensor.h"
#include "OrbisGeneric/Components/Xcvr.h"

#include <fmt/format.h>

#include <string>

namespace Noted {

namespace Logical = Component::LogicalDevice;

// The last call.
inline std::string called;
// Not PL_STATUS_OK, so that a test notices when the status does not reach the caller.
inline pl_status note( std::string call ) {
   called = std::move( call );
   return PL_STATUS_DEVICE_FAULT;
}

struct Slot : Logical::Slot {
   pl_status getPresence( char ** ) override { return note( "getPresence" ); }
};
struct Led : Logical::Led {
   bool handleBlinkTimer( bool on ) override {
      return note( fmt::format( "blink {}", on ) ) != PL_STATUS_OK;
   }
   pl_status setLightSetting( pl_led_status s ) override {
      return note( fmt::format( "led {}", int( s ) ) );
   }
};
struct TempSensor : Logical::TempSensor {
   pl_status getTemperature( float *out ) override {
      *out = 1.5f;
      return note( "getTemperature" );
   }
};
struct Fan : Logical::Fan {
   pl_status getRpm( int * ) override { return note( "getRpm" ); }
   pl_status setRpm( int rpm ) override { return note( fmt::format( "setRpm {}", rpm ) ); }
};
struct Psu : Logical::Psu {
   pl_status get_power_ok( int * ) override { return note( "power_ok" ); }
   pl_status get_input_current( float * ) override { return note( "input_current" ); }
   pl_status get_output_current( float * ) override { return note( "output_current" ); }
   pl_status get_input_voltage( float * ) override { return note( "input_voltage" ); }
   pl_status get_output_voltage( float * ) override { return note( "output_voltage" ); }
   pl_status get_input_power( float * ) override { return note( "input_power" ); }
   pl_status get_output_power( float * ) override { return note( "output_power" ); }
};
struct Sfp : Logical::SfpXcvr {
   int getPresence() override { return note( "sfp getPresence" ), 1; }
   pl_status getTxFault( int * ) override { return note( "getTxFault" ); }
   pl_status getRxLos( int * ) override { return note( "getRxLos" ); }
   pl_status getTxDisable( int * ) override { return note( "getTxDisable" ); }
   pl_status setTxDisable( int v ) override { return note( fmt::format( "setTxDisable {}", v ) ); }
};
struct Qsfp : Logical::QsfpXcvr {
   int getPresence() override { return note( "qsfp getPresence" ), 1; }
   pl_status getModSel( int * ) override { return note( "getModSel" ); }
   pl_status setModSel( int v ) override { return note( fmt::format( "setModSel {}", v ) ); }
   pl_status getLpMode( int * ) override { return note( "getLpMode" ); }
   pl_status setLpMode( int v ) override { return note( fmt::format( "setLpMode {}", v ) ); }
   pl_status getReset( int * ) override { return note( "getReset" ); }
   pl_status setReset( int v ) override { return note( fmt::format( "setReset {}", v ) ); }
   pl_status getInterrupt( int * ) override { return note( "getInterrupt" ); }
};
struct Gpio : Logical::Gpio {
   pl_status bitClear() override { return note( "bitClear" ); }
   pl_status bitSet() override { return note( "bitSet" ); }
   pl_status bitRead( unsigned int * ) override { return note( "bitRead" ); }
};

} // namespace Noted
