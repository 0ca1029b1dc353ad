#include "health/pmbus/Formats.h"

#include <cmath>

namespace Health::Pmbus {

double linear11( uint16_t word ) {
   const int exponent = static_cast<int16_t>( word ) >> 11;
   const int mantissa = static_cast<int16_t>( word << 5 ) >> 5;
   return std::ldexp( mantissa, exponent );
}

std::optional<double> ulinear16( uint16_t word, uint8_t voutMode ) {
   if ( voutMode & 0xE0 )
      return {};
   const int exponent = static_cast<int8_t>( static_cast<uint8_t>( voutMode << 3 ) ) >> 3;
   return std::ldexp( word, exponent );
}

} // namespace Health::Pmbus
