#include "simulator/chips/Drift.h"

#include <cmath>

namespace Simulator {

namespace {

// The mixing function of splitmix64: similar inputs give unrelated outputs, equal on all machines.
uint64_t mixed( uint64_t word ) {
   word += 0x9E3779B97F4A7C15;
   word = ( word ^ word >> 30 ) * 0xBF58476D1CE4E5B9;
   word = ( word ^ word >> 27 ) * 0x94D049BB133111EB;
   return word ^ word >> 31;
}

} // namespace

double randomShare( uint64_t seed, uint64_t number ) {
   const uint64_t word = mixed( mixed( seed ) + number );
   return static_cast<double>( word >> 11 ) * 0x1p-52 - 1;
}

double Drift::turningPoint( uint64_t number ) const {
   return number == 0 ? 0 : amplitude_ * randomShare( seed_, number );
}

double Drift::at( Bus::Clock::Time time ) const {
   if ( amplitude_ == 0 )
      return 0;
   const double turns = std::chrono::duration<double>( time ) / period_;
   const double whole = std::floor( turns );
   const double part = turns - whole;
   const auto number = static_cast<uint64_t>( whole );
   const double from = turningPoint( number );
   // The slope is zero at both turning points, so there is no kink.
   return from + ( turningPoint( number + 1 ) - from ) * part * part * ( 3 - 2 * part );
}

} // namespace Simulator
