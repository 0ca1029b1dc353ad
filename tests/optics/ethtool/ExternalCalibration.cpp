#include "ExternalCalibration.h"

#include <bit>
#include <cmath>

namespace OpticsTest {

using namespace Optics;

namespace {

uint16_t wordAtA2( const Bytes &file, size_t place ) {
   return static_cast<uint16_t>( file[a2 + place] << 8 | file[a2 + place + 1] );
}

int16_t signedAtA2( const Bytes &file, size_t place ) {
   return static_cast<int16_t>( wordAtA2( file, place ) );
}

double constantOf( const Bytes &file, size_t power ) {
   const size_t place = 72 - 4 * power;
   return double( std::bit_cast<float>( uint32_t( wordAtA2( file, place ) ) << 16 |
                                        wordAtA2( file, place + 2 ) ) );
}

double rxPowerCounts( const Bytes &file, size_t word ) {
   double counts = 0;
   bool isAllZero = true;
   for ( size_t power = 0; power <= 4; ++power ) {
      const double constant = constantOf( file, power );
      isAllZero = isAllZero && constant == 0;
      counts += constant * std::pow( double( wordAtA2( file, word ) ), double( power ) );
   }
   return isAllZero ? NAN : counts;
}

} // namespace

bool canBe( const Bytes &file, Quantity quantity, size_t word ) {
   if ( quantity == Quantity::RxPower ) {
      for ( size_t power = 0; power <= 4; ++power )
         if ( !std::isfinite( constantOf( file, power ) ) )
            return false;
      const double counts = rxPowerCounts( file, word );
      return counts >= -4096 && counts <= 65535; // not of NaN
   }
   const bool isTemperature = quantity == Quantity::Temperature;
   const size_t slope = isTemperature                         ? 84
                        : quantity == Quantity::SupplyVoltage ? 88
                        : quantity == Quantity::TxBias        ? 76
                                                              : 80;
   if ( wordAtA2( file, slope ) == 0 )
      return false;
   const double raw = isTemperature ? signedAtA2( file, word ) : double( wordAtA2( file, word ) );
   const double counts = wordAtA2( file, slope ) * raw / 256 + signedAtA2( file, slope + 2 );
   return isTemperature ? counts >= -32768 && counts <= 32767 : counts >= -4096 && counts <= 65535;
}

double withoutPowers( const Bytes &file, size_t word ) {
   return ( constantOf( file, 4 ) + constantOf( file, 3 ) + constantOf( file, 2 ) +
            constantOf( file, 1 ) ) *
             wordAtA2( file, word ) +
          constantOf( file, 0 );
}

} // namespace OpticsTest
