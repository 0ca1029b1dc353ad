#pragma once

#include "smbus/Clock.h"

#include <cstdint>

namespace Simulator {

// Between -1 and 1: unrelated for different numbers, the same for the same ones on all machines.
double randomShare( uint64_t seed, uint64_t number );

// A slow random change around zero: in every period it moves to a new value. The values depend only
// on the seed, so that a run can be repeated exactly. It starts at zero.
class Drift {
 public:
   Drift() = default; // stays at zero
   // Between -amplitude and amplitude.
   Drift( double amplitude, std::chrono::duration<double> period, uint64_t seed )
      : amplitude_( amplitude ), period_( period ), seed_( seed ) {}

   double at( Bus::Clock::Time ) const;

 private:
   double turningPoint( uint64_t number ) const;

   double amplitude_ = 0;
   std::chrono::duration<double> period_{ 1 };
   uint64_t seed_ = 0;
};

} // namespace Simulator
