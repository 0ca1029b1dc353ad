#include "simulator/chips/modules/SfpCalibration.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace Simulator {

namespace {

// The slopes are sums of powers of two, so that 8.8 bits hold them.
constexpr struct {
   double slope;
   int offset;
} ofCelsius{ 1.0625, -128 }, ofVolts{ 0.9375, 200 }, ofBias{ 2, 10 }, ofTxPower{ 0.5, -40 };

// Received power: square * raw * raw + linear * raw + constant.
constexpr struct { float square, linear, constant; } ofRxPower{ 0x1p-20f, 0.4375f, -12 };

} // namespace

uint16_t SfpCalibration::raw( double value, const Line &line, long least, long most ) const {
   if ( !isExternal_ )
      return static_cast<uint16_t>( std::lround( value ) );
   return static_cast<uint16_t>(
      std::clamp( std::lround( ( value - line.offset ) / line.slope ), least, most ) );
}

uint16_t SfpCalibration::celsius( uint16_t word ) const {
   return raw( static_cast<int16_t>( word ), { ofCelsius.slope, ofCelsius.offset }, -32768, 32767 );
}
uint16_t SfpCalibration::volts( uint16_t word ) const {
   return raw( word, { ofVolts.slope, ofVolts.offset }, 0, 65535 );
}
uint16_t SfpCalibration::bias( uint16_t word ) const {
   return raw( word, { ofBias.slope, ofBias.offset }, 0, 65535 );
}
uint16_t SfpCalibration::txPower( uint16_t word ) const {
   return raw( word, { ofTxPower.slope, ofTxPower.offset }, 0, 65535 );
}

uint16_t SfpCalibration::rxPower( uint16_t word ) const {
   if ( !isExternal_ )
      return word;
   const double a = ofRxPower.square;
   const double b = ofRxPower.linear;
   const double c = ofRxPower.constant - word;
   const double root = ( -b + std::sqrt( b * b - 4 * a * c ) ) / ( 2 * a );
   return static_cast<uint16_t>( std::clamp( std::lround( root ), 0L, 65535L ) );
}

void SfpCalibration::putConstants( WholeMemory &memory ) const {
   const auto putFloat = [&]( unsigned at, float value ) {
      const auto bits = std::bit_cast<uint32_t>( value );
      memory.putWord( at, bits >> 16 );
      memory.putWord( at + 2, bits & 0xFFFF );
   };
   const auto putLine = [&]( unsigned at, double slope, int offset ) {
      memory.putWord( at, static_cast<unsigned>( ( isExternal_ ? slope : 1 ) * 256 ) );
      memory.putWord( at + 2, static_cast<uint16_t>( isExternal_ ? offset : 0 ) );
   };
   putFloat( 64, isExternal_ ? ofRxPower.square : 0 ); // 56 and 60: no higher powers
   putFloat( 68, isExternal_ ? ofRxPower.linear : 1 );
   putFloat( 72, isExternal_ ? ofRxPower.constant : 0 );
   putLine( 76, ofBias.slope, ofBias.offset );
   putLine( 80, ofTxPower.slope, ofTxPower.offset );
   putLine( 84, ofCelsius.slope, ofCelsius.offset );
   putLine( 88, ofVolts.slope, ofVolts.offset );
}

} // namespace Simulator
