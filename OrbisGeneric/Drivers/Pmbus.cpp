#include "OrbisGeneric/Drivers/Pmbus.h"

#include "OrbisGeneric/Assert.h"
#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/Drivers/PmbusMap.h"
#include "OrbisGeneric/Ham/Ham.h"

#include <algorithm>
#include <cmath>

namespace Drivers {

using namespace PmbusMap;

Component::HardwareDevice *Pmbus::create( const DriverArgs &, Ham::Ham * ) {
   PL_TRACE( 0, "Creating Pmbus Device" );
   return new Pmbus;
}

Component::LogicalDevice::Psu *Pmbus::newPsu( const DriverArgs & ) {
   PL_TRACE( 0, "Creating Pmbus Psu Device" );
   return new Psu( this );
}

Component::LogicalDevice::Fan *Pmbus::newFan( const DriverArgs &args ) {
   PL_TRACE( 0, "Creating Pmbus Fan Device" );
   assert( args.driverArgs.find( "fanId" ) != args.driverArgs.end() );
   const int fanId = std::stoi( args.driverArgs.at( "fanId" ) );
   assert( fanId == 1 || fanId == 2 );
   assert( args.driverArgs.find( "maxFanRpm" ) != args.driverArgs.end() );
   const int maxFanRpm = std::stoi( args.driverArgs.at( "maxFanRpm" ) );
   const auto pec = args.driverArgs.find( "pec" );
   return new Fan( this, fanId, maxFanRpm, pec != args.driverArgs.end() && pec->second == "true" );
}

Component::LogicalDevice::TempSensor *Pmbus::newTempSensor( const DriverArgs &args ) {
   PL_TRACE( 0, "Creating Pmbus TempSensor Device" );
   assert( args.driverArgs.find( "sensorId" ) != args.driverArgs.end() );
   const int id = std::stoi( args.driverArgs.at( "sensorId" ) );
   assert( id == 1 || id == 2 );
   return new TempSensor( this, static_cast<uint8_t>( id ) );
}

Pmbus::Fan::Fan( Pmbus *pmbus, int fanId, int32_t rpmAtFullDuty, bool usePec )
   : speedRegister_( fanId == 1 ? READ_FAN_SPEED_1 : READ_FAN_SPEED_2 ),
     commandRegister_( fanId == 1 ? FAN_COMMAND_1 : FAN_COMMAND_2 ), pec( usePec ), pmbus_( pmbus ),
     index_( static_cast<uint8_t>( fanId - 1 ) ), maxFanRpm( rpmAtFullDuty ) {}

Pmbus::TempSensor::TempSensor( Pmbus *pmbus, uint8_t id )
   : pmbus_( pmbus ), id_( id ), reg_( id == 1 ? READ_TEMPERATURE_1 : READ_TEMPERATURE_2 ) {}

namespace {

int32_t signExtended( uint32_t value, unsigned bits ) {
   return static_cast<int32_t>( value << ( 32 - bits ) ) >> ( 32 - bits );
}

} // namespace

float Pmbus::linearToReal( uint16_t mantissa, uint8_t exponent, uint8_t mantissaBits,
                           uint8_t exponentBits ) {
   return powf( 2.0f, static_cast<float>( signExtended( exponent, exponentBits ) ) ) *
          static_cast<float>( signExtended( mantissa, mantissaBits ) );
}

pl_status Pmbus::pmbus_read_linear( uint8_t command, float *value ) {
   uint16_t word = 0;
   if ( pl_status status = ham_->read16( command, &word ) )
      return status;
   *value = linearToReal( linear11Mantissa( word ), linear11Exponent( word ), linear11MantissaBits,
                          linear11ExponentBits );
   return PL_STATUS_OK;
}

pl_status Pmbus::get_power_ok( int *ok ) {
   uint16_t word = 0;
   if ( pl_status status = ham_->read16( STATUS_WORD, &word ) )
      return status;
   if ( !( word & OFF ) && ( word & POWER_GOOD_N ) )
      return PL_STATUS_DEVICE_FAULT;
   *ok = word & POWER_GOOD_N ? 0 : 1;
   return PL_STATUS_OK;
}

pl_status Pmbus::get_input_current( float *amperes ) {
   return pmbus_read_linear( READ_IIN, amperes );
}

pl_status Pmbus::get_output_current( float *amperes ) {
   return pmbus_read_linear( READ_IOUT, amperes );
}

pl_status Pmbus::get_input_voltage( float *volts ) { return pmbus_read_linear( READ_VIN, volts ); }

pl_status Pmbus::get_output_voltage( float *volts ) {
   ham_->prepare();
   const auto mode = ham_->addRead8( VOUT_MODE );
   const auto voltage = ham_->addRead16( READ_VOUT );
   if ( pl_status status = ham_->execute() )
      return status;
   const uint8_t reg1 = ham_->get8( mode );
   assert( ( reg1 & 0xe0 ) == 0 );
   *volts = linearToReal( ham_->get16( voltage ), reg1, 16, 5 );
   return PL_STATUS_OK;
}

pl_status Pmbus::get_input_power( float *watts ) { return pmbus_read_linear( READ_PIN, watts ); }

pl_status Pmbus::get_output_power( float *watts ) { return pmbus_read_linear( READ_POUT, watts ); }

pl_status Pmbus::getFanRpm( Fan *fan, int *rpm ) {
   float value = 0;
   if ( pl_status status = pmbus_read_linear( fan->speedRegister_, &value ) )
      return status;
   *rpm = static_cast<int>( value );
   return PL_STATUS_OK;
}

pl_status Pmbus::setFanRpm( Fan *fan, int rpm ) {
   // Only the low 16 bits, as an unsigned number: a negative duty becomes large, then 100 %.
   const auto hundredfold = static_cast<int32_t>( static_cast<uint32_t>( rpm ) * 100 );
   auto duty = static_cast<uint16_t>( hundredfold / fan->maxFanRpm );
   PL_TRACE( 6, "Setting fan %d duty cycle to %d", fan->index_, duty );
   duty = std::min<uint16_t>( duty, 100 );
   const pl_status status = ham_->write16( fan->commandRegister_, duty, fan->pec );
   if ( status != PL_STATUS_OK )
      PL_TRACE( 0, "Failed to set fan%d duty cycle to %d", fan->index_, duty );
   return status;
}

pl_status Pmbus::getTemperature( uint8_t reg, float *celsius ) {
   const pl_status status = pmbus_read_linear( reg, celsius );
   if ( *celsius < 0.0f )
      *celsius = 0.0f;
   return status;
}

} // namespace Drivers
