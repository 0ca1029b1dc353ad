// A power supply that speaks PMBus: its readings, its fans and its temperature sensors.
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
   // "fanId" (1 or 2), "maxFanRpm" (the rpm of 100 % duty), "pec" ("true": on the fan command).
   Component::LogicalDevice::Fan *newFan( const DriverArgs &args ) override;
   // "sensorId" (1 or 2).
   Component::LogicalDevice::TempSensor *newTempSensor( const DriverArgs &args ) override;

   // Amperes, volts, watts. A bus failure's status goes up, and the output keeps its value.
   // Power-good: a supply that runs and says that its power is not good is a fault (2), not a 0.
   pl_status get_power_ok( int *ok );
   pl_status get_input_current( float *amperes );
   pl_status get_output_current( float *amperes );
   pl_status get_input_voltage( float *volts );
   // Only the linear mode of VOUT_MODE; any other is an assertion failure. The mantissa is taken as
   // signed, although the standard has it unsigned: a word from 0x8000 up is negative.
   pl_status get_output_voltage( float *volts );
   pl_status get_input_power( float *watts );
   pl_status get_output_power( float *watts );
   pl_status getFanRpm( Fan *fan, int *rpm );
   pl_status setFanRpm( Fan *fan, int rpm );
   // Degrees Celsius, never below 0: what lies in the output after a failed read is raised too.
   pl_status getTemperature( uint8_t reg, float *celsius );

   // Reads a command whose word is LINEAR11.
   pl_status pmbus_read_linear( uint8_t command, float *value );
   // Mantissa times two to the exponent, both two's complement numbers of so many bits.
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
   virtual uint8_t reg() const { return reg_; } // the command that reads it

   Pmbus *pmbus_;
   uint8_t id_;
   uint8_t reg_;
};

} // namespace Drivers
