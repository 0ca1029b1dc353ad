#include "OrbisGeneric/Components/TempSensor.h"

#include "OrbisGeneric/Components/Device.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/LibraryInit.h"

namespace Component::LogicalDevice {

pl_status TempSensor::getTemperatureCallback( pl_temp_sensor *sensor, float *celsius ) {
   PL_TRACE( 4, "%s(%p)", __func__, static_cast<void *>( sensor ) );
   return objectOf<TempSensor>( sensor )->getTemperature( celsius );
}

const pl_temp_sensor_ops TempSensor::ops_ = { sizeof( pl_temp_sensor_ops ), nullptr,
                                              getTemperatureCallback };

} // namespace Component::LogicalDevice

pl_status pl_temp_sensor_init( const char *topology ) {
   return static_cast<pl_status>( orbisLibraryInit( __func__, topology, connectionAttempts ) );
}

// Unlike the other pl_<type>_add functions, this one does not trace a missing driver or sensor.
pl_temp_sensor *pl_temp_sensor_add( const char *json, float alert, float critical ) {
   Drivers::DriverArgs args;
   auto *device = Component::DeviceBase::create( json, args );
   auto *sensor = device ? device->newTempSensor( args ) : nullptr;
   if ( !sensor )
      return nullptr;
   PL_TRACE( 0, "setting alert threshold" );
   sensor->alertThresholdIs( alert );
   PL_TRACE( 0, "setting critical threshold" );
   sensor->criticalThresholdIs( critical );
   return &sensor->record_;
}
