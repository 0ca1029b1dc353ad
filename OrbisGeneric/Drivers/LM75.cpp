#include "OrbisGeneric/Drivers/LM75.h"

#include "OrbisGeneric/Assert.h"
#include "OrbisGeneric/Ham/Ham.h"
#include "OrbisGeneric/HostServices.h"

#include <cmath>

namespace Drivers {

namespace {

constexpr uint8_t temperatureRegister = 0;
constexpr uint16_t halfDegree = 0x8000;

// The low byte of a whole number of any size, as of an integer; 0 for one that isn't finite.
uint8_t lowByte( float whole ) {
   return std::isfinite( whole ) ? static_cast<uint8_t>( static_cast<int>( fmodf( whole, 256 ) ) )
                                 : 0;
}

} // namespace

Component::HardwareDevice *LM75::create( const DriverArgs &, Ham::Ham * ) { return new LM75; }

Component::LogicalDevice::TempSensor *LM75::newTempSensor( const DriverArgs & ) {
   PL_TRACE( 5, "Creating LM75" );
   return new TempSensor( this );
}

float LM75::registerToTemperature( uint16_t word ) {
   const auto degrees = static_cast<int8_t>( word & 0xFF );
   if ( !( word & halfDegree ) )
      return degrees;
   return degrees < 0 ? degrees - 0.5f : degrees + 0.5f;
}

uint16_t LM75::temperatureToRegister( float celsius ) {
   const auto degrees = static_cast<int8_t>( lowByte( truncf( celsius ) ) );
   const unsigned secondByte = lowByte( roundf( 2 * ( celsius - degrees ) ) ) << 7 & 0xFF;
   return static_cast<uint16_t>( secondByte << 8 | static_cast<unsigned>( degrees ) );
}

pl_status LM75::readDegrees( uint8_t reg, float *celsius ) {
   uint16_t word = 0;
   if ( pl_status status = ham_->read16( reg, &word ) )
      return status;
   *celsius = registerToTemperature( word );
   return PL_STATUS_OK;
}

pl_status LM75::getTemperature( float *celsius ) {
   PL_TRACE( 6, "%s", __PRETTY_FUNCTION__ );
   return readDegrees( temperatureRegister, celsius );
}

pl_status LM75::getThreshold( Threshold threshold, float *celsius ) {
   PL_TRACE( 6, "%s", __PRETTY_FUNCTION__ );
   return readDegrees( static_cast<uint8_t>( threshold ), celsius );
}

pl_status LM75::setThreshold( Threshold threshold, float celsius ) {
   return ham_->write16( static_cast<unsigned>( threshold ), temperatureToRegister( celsius ),
                         false );
}

void LM75::TempSensor::alertThresholdIs( float value ) {
   alertThreshold = value;
   assert( device_->setThreshold( Threshold::Alert, value ) == PL_STATUS_OK );
}

void LM75::TempSensor::criticalThresholdIs( float value ) {
   criticalThreshold = value;
   assert( device_->setThreshold( Threshold::Overheat, value ) == PL_STATUS_OK );
}

pl_status LM75::TempSensor::getTemperature( float *celsius ) {
   return device_->getTemperature( celsius );
}

} // namespace Drivers
