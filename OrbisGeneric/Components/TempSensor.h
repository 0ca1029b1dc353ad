// A temperature sensor, in degrees Celsius.
#pragma once

#include "OrbisGeneric/Components/Record.h"

namespace Component::LogicalDevice {

class TempSensor {
 public:
   pl_temp_sensor record_{ nullptr, &ops_, this };
   float alertThreshold = 0;
   float criticalThreshold = 0;

   virtual ~TempSensor() = default;
   virtual void alertThresholdIs( float celsius ) { alertThreshold = celsius; }
   virtual void criticalThresholdIs( float celsius ) { criticalThreshold = celsius; }
   virtual pl_status getTemperature( float *celsius ) = 0;

   static pl_status getTemperatureCallback( pl_temp_sensor *sensor, float *celsius );
   static const pl_temp_sensor_ops ops_;
};

static_assert( isTableSize<pl_temp_sensor_ops>( 12 ) );

} // namespace Component::LogicalDevice
