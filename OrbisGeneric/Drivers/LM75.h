// LM75 thermometer (National Semiconductor LM75 data sheet, "Temperature Data Format").
//
// A register has nine bits, high byte first: the first byte is the whole degrees, bit 7 of the
// second byte is the half degree. An SMBus word is low byte first, so there the degrees are the low
// byte and the half degree is bit 15.
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

   // Degrees Celsius. On a bus failure they return its status and the output is unchanged.
   pl_status getTemperature( float *celsius );
   pl_status getThreshold( Threshold threshold, float *celsius );
   pl_status setThreshold( Threshold threshold, float celsius );

   // The half degree is added to the magnitude, also below zero: 0x80E7 is -25.5.
   static float registerToTemperature( uint16_t word );
   // A fraction of 0.75 or more is dropped, not rounded up. Below zero the half degree is always
   // set.
   static uint16_t temperatureToRegister( float celsius );

   class TempSensor : public Component::LogicalDevice::TempSensor {
    public:
      explicit TempSensor( LM75 *device ) : device_( device ) {}

      // An assertion fails when a threshold can't be written, because the chip is then unprotected.
      void alertThresholdIs( float value ) override;
      void criticalThresholdIs( float value ) override;
      pl_status getTemperature( float *celsius ) override;

      LM75 *device_;
   };

 private:
   pl_status readDegrees( uint8_t reg, float *celsius );
};

} // namespace Drivers
