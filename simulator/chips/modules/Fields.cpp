#include "simulator/chips/modules/Fields.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace Simulator {

namespace {

uint16_t unsignedWord( double value ) {
   return static_cast<uint16_t>( std::clamp( std::lround( value ), 0L, 65535L ) );
}

} // namespace

uint16_t celsiusWord( double celsius ) {
   return static_cast<uint16_t>( std::clamp( std::lround( celsius * 256 ), -32768L, 32767L ) );
}
uint16_t voltsWord( double volts ) { return unsignedWord( volts * 10000 ); }
uint16_t powerWord( double milliwatts ) { return unsignedWord( milliwatts * 10000 ); }
uint16_t biasWord( double milliamperes ) { return unsignedWord( milliamperes * 500 ); }

template <unsigned First, unsigned Size>
void Fields<First, Size>::putText( unsigned at, unsigned length, const std::string &text ) {
   if ( text.size() > length )
      throw std::length_error( "longer than its field: " + text );
   const auto begin = bytes_.begin() + ( at - First );
   std::fill_n( begin, length, ' ' );
   std::copy( text.begin(), text.end(), begin );
}

template class Fields<0, 256>;
template class Fields<0, 128>;
template class Fields<128, 128>;

} // namespace Simulator
