// A power supply: power good, and voltage, current and power of input and output.
#pragma once

#include "OrbisGeneric/Components/Record.h"

namespace Component::LogicalDevice {

class Psu {
 public:
   pl_psu record_{ nullptr, &ops_, this };

   // Objects are never deleted through this class.
   virtual pl_status get_power_ok( int *ok ) = 0;
   virtual pl_status get_input_current( float *amperes ) = 0;
   virtual pl_status get_output_current( float *amperes ) = 0;
   virtual pl_status get_input_voltage( float *volts ) = 0;
   virtual pl_status get_output_voltage( float *volts ) = 0;
   virtual pl_status get_input_power( float *watts ) = 0;
   virtual pl_status get_output_power( float *watts ) = 0;

   static pl_status get_power_ok_callback( pl_psu *psu, int *ok );
   static pl_status get_input_current_callback( pl_psu *psu, float *amperes );
   static pl_status get_output_current_callback( pl_psu *psu, float *amperes );
   static pl_status get_input_voltage_callback( pl_psu *psu, float *volts );
   static pl_status get_output_voltage_callback( pl_psu *psu, float *volts );
   static pl_status get_input_power_callback( pl_psu *psu, float *watts );
   static pl_status get_output_power_callback( pl_psu *psu, float *watts );
   static const pl_psu_ops ops_;
};

static_assert( isTableSize<pl_psu_ops>( 36 ) );

} // namespace Component::LogicalDevice
