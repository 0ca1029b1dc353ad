// LM75 thermometer (National Semiconductor LM75 data sheet, "Temperature Data Format").
//
// A register is nine bits, high byte first: whole degrees, then bit 7 of the second byte for the
// half degree. As an SMBus word, low byte first, the degrees are the low byte and the half degree
// is bit 15.
#pragma once

#include "OrbisGeneric/Components/Device.h"
#include "OrbisGeneric/Components/TempSensor.h"

namespace Drivers {

class LM75 : public Component::HardwareDevice {
 public:
   // The threshold registers.
   enum class Threshold : uint8_t { Alert = 2, Overheat = 3 };

   static Component::HardwareDevice *create( const DriverArgs &args, Ham::Ham *ham );
   Component::LogicalDevice::TempSensor *newTempSensor( const DriverArgs &args ) override;

   // Degrees Celsius; on a bus failure its status, and the output is left alone.
   pl_status getTemperature( float *celsius );
   pl_status getThreshold( Threshold threshold, float *celsius );
   pl_status setThreshold( Threshold threshold, float celsius );

   // The half degree is added to the magnitude, either side of zero: 0x80E7 is -25.5.
   static float registerToTemperature( uint16_t word );
   // A fraction from 0.75 up is dropped, not rounded up; below zero the half degree is always set.
   static uint16_t temperatureToRegister( float celsius );

   class TempSensor : public Component::LogicalDevice::TempSensor {
    public:
      explicit TempSensor( LM75 *device ) : device_( device ) {}

      // A threshold that can't be written leaves the chip unprotected: that ends the process.
      void alertThresholdIs( float value ) override;
      void criticalThresholdIs( float value ) override;
      pl_status getTemperature( float *celsius ) override;

      LM75 *device_;
   };

 private:
   pl_status readDegrees( uint8_t reg, float *celsius );
};

} // namespace Drivers
