#include "simulator/chips/PmbusFormats.h"

#include <algorithm>
#include <cmath>

namespace Simulator {

namespace {

constexpr int leastExponent = -16;
constexpr int mostExponent = 15;
constexpr long leastMantissa = -1024;
constexpr long mostMantissa = 1023;

} // namespace

uint16_t toLinear11( double value ) {
   int exponent = leastExponent;
   const auto mantissa = [&] { return std::lround( std::ldexp( value, -exponent ) ); };
   while ( exponent < mostExponent && ( mantissa() < leastMantissa || mantissa() > mostMantissa ) )
      ++exponent;
   const long kept = std::clamp( mantissa(), leastMantissa, mostMantissa );
   return static_cast<uint16_t>( ( exponent & 0x1F ) << 11 | ( kept & 0x7FF ) );
}

double fromLinear11( uint16_t word ) {
   const int exponent = static_cast<int16_t>( word ) >> 11;
   const int mantissa = static_cast<int16_t>( word << 5 ) >> 5;
   return std::ldexp( mantissa, exponent );
}

uint16_t toLinear16( double volts, int exponent ) {
   return static_cast<uint16_t>(
      std::clamp( std::lround( std::ldexp( volts, -exponent ) ), 0L, 0xFFFFL ) );
}

} // namespace Simulator
