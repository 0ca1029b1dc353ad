// A PMBus power supply: its readings, its fans and its temperature sensors.
#pragma once

#include "OrbisGeneric/Components/Device.h"
#include "OrbisGeneric/Components/Fan.h"
#include "OrbisGeneric/Components/Psu.h"
#include "OrbisGeneric/Components/TempSensor.h"

namespace Drivers {

class Pmbus : public Component::HardwareDevice {
 public:
   class Psu;
   class Fan;
   class TempSensor;

   static Component::HardwareDevice *create( const DriverArgs &args, Ham::Ham *ham );
   Component::LogicalDevice::Psu *newPsu( const DriverArgs &args ) override;
   // "fanId" (1 or 2), "maxFanRpm" (the rpm of 100 % duty), "pec" ("true": for the fan command).
   Component::LogicalDevice::Fan *newFan( const DriverArgs &args ) override;
   // "sensorId" (1 or 2).
   Component::LogicalDevice::TempSensor *newTempSensor( const DriverArgs &args ) override;

   // Amperes, volts, watts. On a bus failure they return its status and the output is unchanged.
   // Power good: returns 2, not a value of 0, when the supply is on and its power is not good.
   pl_status get_power_ok( int *ok );
   pl_status get_input_current( float *amperes );
   pl_status get_output_current( float *amperes );
   pl_status get_input_voltage( float *volts );
   // An assertion fails when VOUT_MODE is not the linear mode. The mantissa is read as a signed
   // number, although it is unsigned in the standard: a word of 0x8000 or more is negative.
   pl_status get_output_voltage( float *volts );
   pl_status get_input_power( float *watts );
   pl_status get_output_power( float *watts );
   pl_status getFanRpm( Fan *fan, int *rpm );
   pl_status setFanRpm( Fan *fan, int rpm );
   // Degrees Celsius, at least 0. Also after a failed read, a negative *celsius becomes 0.
   pl_status getTemperature( uint8_t reg, float *celsius );

   // Reads a LINEAR11 word.
   pl_status pmbus_read_linear( uint8_t command, float *value );
   // mantissa * 2^exponent. Both are two's complement numbers with the given numbers of bits.
   static float linearToReal( uint16_t mantissa, uint8_t exponent, uint8_t mantissaBits,
                              uint8_t exponentBits );
};

class Pmbus::Psu final : public Component::LogicalDevice::Psu {
 public:
   explicit Psu( Pmbus *pmbus ) : pmbus_( pmbus ) {}

   pl_status get_power_ok( int *ok ) override { return pmbus_->get_power_ok( ok ); }
   pl_status get_input_current( float *a ) override { return pmbus_->get_input_current( a ); }
   pl_status get_output_current( float *a ) override { return pmbus_->get_output_current( a ); }
   pl_status get_input_voltage( float *v ) override { return pmbus_->get_input_voltage( v ); }
   pl_status get_output_voltage( float *v ) override { return pmbus_->get_output_voltage( v ); }
   pl_status get_input_power( float *w ) override { return pmbus_->get_input_power( w ); }
   pl_status get_output_power( float *w ) override { return pmbus_->get_output_power( w ); }

   Pmbus *pmbus_;
};

class Pmbus::Fan : public Component::LogicalDevice::Fan {
 public:
   // fanId 1 or 2.
   Fan( Pmbus *pmbus, int fanId, int32_t rpmAtFullDuty, bool usePec );

   pl_status getRpm( int *rpm ) override { return pmbus_->getFanRpm( this, rpm ); }
   pl_status setRpm( int rpm ) override { return pmbus_->setFanRpm( this, rpm ); }

   uint8_t speedRegister_;
   uint8_t commandRegister_;
   bool pec;
   Pmbus *pmbus_;
   uint8_t index_; // from 0
   int32_t maxFanRpm;
};

class Pmbus::TempSensor : public Component::LogicalDevice::TempSensor {
 public:
   // id 1 or 2.
   TempSensor( Pmbus *pmbus, uint8_t id );

   pl_status getTemperature( float *celsius ) override {
      return pmbus_->getTemperature( reg(), celsius );
   }
   virtual uint8_t id() const { return id_; }
   virtual uint8_t reg() const { return reg_; } // the command that reads the sensor

   Pmbus *pmbus_;
   uint8_t id_;
   uint8_t reg_;
};

} // namespace Drivers
