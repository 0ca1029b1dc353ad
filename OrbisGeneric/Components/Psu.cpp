#include "OrbisGeneric/Components/Psu.h"

#include "OrbisGeneric/Components/Add.h"
#include "OrbisGeneric/LibraryInit.h"

namespace Component::LogicalDevice {

pl_status Psu::get_power_ok_callback( pl_psu *psu, int *ok ) {
   PL_TRACE( 4, "%s", __func__ );
   return objectOf<Psu>( psu )->get_power_ok( ok );
}

pl_status Psu::get_input_current_callback( pl_psu *psu, float *amperes ) {
   PL_TRACE( 4, "%s", __func__ );
   return objectOf<Psu>( psu )->get_input_current( amperes );
}

pl_status Psu::get_output_current_callback( pl_psu *psu, float *amperes ) {
   PL_TRACE( 4, "%s", __func__ );
   return objectOf<Psu>( psu )->get_output_current( amperes );
}

pl_status Psu::get_input_voltage_callback( pl_psu *psu, float *volts ) {
   PL_TRACE( 4, "%s", __func__ );
   return objectOf<Psu>( psu )->get_input_voltage( volts );
}

pl_status Psu::get_output_voltage_callback( pl_psu *psu, float *volts ) {
   PL_TRACE( 4, "%s", __func__ );
   return objectOf<Psu>( psu )->get_output_voltage( volts );
}

pl_status Psu::get_input_power_callback( pl_psu *psu, float *watts ) {
   PL_TRACE( 4, "%s", __func__ );
   return objectOf<Psu>( psu )->get_input_power( watts );
}

pl_status Psu::get_output_power_callback( pl_psu *psu, float *watts ) {
   PL_TRACE( 4, "%s", __func__ );
   return objectOf<Psu>( psu )->get_output_power( watts );
}

const pl_psu_ops Psu::ops_ = {
   sizeof( pl_psu_ops ),        nullptr,
   get_power_ok_callback,       get_input_current_callback,
   get_output_current_callback, get_input_voltage_callback,
   get_output_voltage_callback, get_input_power_callback,
   get_output_power_callback,
};

} // namespace Component::LogicalDevice

pl_status pl_psu_init( const char *topology ) {
   return static_cast<pl_status>( orbisLibraryInit( __func__, topology, connectionAttempts ) );
}

pl_psu *pl_psu_add( const char *json ) {
   auto *psu = Component::addObject( json, &Component::DeviceBase::newPsu, "newPsu() failed" );
   return psu ? &psu->record_ : nullptr;
}
