// What the memories of all pluggable modules are made of.
#pragma once

#include "simulator/chips/modules/Optics.h"

#include <array>
#include <cstdint>
#include <string>

namespace Simulator {

// The identification of a pluggable module.
struct ModuleIdentity {
   std::string vendor; // at most 16 characters; part number and serial, too
   std::string partNumber;
   std::string revision; // 4 for an SFP, 2 for others
   std::string serial;
   std::string date; // YYMMDD and two characters of the lot
};

// Bytes with the addresses that the standards give them.
template <unsigned First, unsigned Size>
class Fields {
 public:
   static constexpr unsigned end = First + Size;

   uint8_t &operator[]( unsigned address ) { return bytes_[address - First]; }
   uint8_t operator[]( unsigned address ) const { return bytes_[address - First]; }

   // Padded with blanks. Throws std::length_error for a text that is longer than its field.
   void putText( unsigned at, unsigned length, const std::string &text );
   void putWord( unsigned at, unsigned word ) { // high byte first
      ( *this )[at] = static_cast<uint8_t>( word >> 8 );
      ( *this )[at + 1] = static_cast<uint8_t>( word );
   }
   // High alarm, low alarm, high warning, low warning.
   void putLimits( unsigned at, const Limits &limits, uint16_t ( *toWord )( double ) ) {
      unsigned next = at;
      for ( const double limit :
            { limits.highAlarm, limits.lowAlarm, limits.highWarning, limits.lowWarning } ) {
         putWord( next, toWord( limit ) );
         next += 2;
      }
   }
   unsigned word( unsigned at ) const {
      return static_cast<unsigned>( ( *this )[at] << 8 | ( *this )[at + 1] );
   }
   // The low byte of the sum of `first` up to `last`.
   uint8_t sum( unsigned first, unsigned last ) const {
      unsigned total = 0;
      for ( unsigned at = first; at <= last; ++at )
         total += ( *this )[at];
      return static_cast<uint8_t>( total );
   }

 private:
   std::array<uint8_t, Size> bytes_{};
};

using WholeMemory = Fields<0, 256>;
using LowerMemory = Fields<0, 128>;
using UpperPage = Fields<128, 128>;

extern template class Fields<0, 256>;
extern template class Fields<0, 128>;
extern template class Fields<128, 128>;

// The words of the monitors, in all of these standards.
uint16_t celsiusWord( double celsius );   // 1/256 degree, signed
uint16_t voltsWord( double volts );       // 100 uV
uint16_t powerWord( double milliwatts );  // 0.1 uW
uint16_t biasWord( double milliamperes ); // 2 uA

// A value's flags, bit 3 to bit 0: high alarm, low alarm, high warning, low warning. The words of
// the limits stand in this order from `at` on.
template <typename Memory>
unsigned flagsOf( unsigned value, const Memory &limits, unsigned at, bool isSigned = false ) {
   // The sign bit turned round, negative words are below the others.
   const unsigned turned = isSigned ? 0x8000 : 0;
   unsigned flags = 0;
   for ( unsigned i = 0; i < 4; ++i ) {
      const unsigned limit = limits.word( at + 2 * i ) ^ turned;
      const bool isHigh = i % 2 == 0;
      if ( isHigh ? ( value ^ turned ) > limit : ( value ^ turned ) < limit )
         flags |= 8u >> i;
   }
   return flags;
}

} // namespace Simulator
