#pragma once

#include "smbus/Clock.h"

#include <mutex>

namespace Simulator {

// The time of a simulation: real time, faster or slower by a factor, or standing still and moved on
// by hand. It never goes back. For all threads.
class SimulationClock final : public Bus::Clock {
 public:
   // Simulated seconds in a real second; at 0 the clock stops. The real clock outlives it.
   SimulationClock( const Bus::Clock &real, double speed ) : real_( real ), speed_( speed ) {}

   Time now() const override {
      const std::lock_guard lock( mutex_ );
      return at( real_.now() );
   }
   double speed() const {
      const std::lock_guard lock( mutex_ );
      return speed_;
   }
   void speedIs( double speed ) {
      const std::lock_guard lock( mutex_ );
      const Time real = real_.now();
      base_ = at( real );
      since_ = real;
      speed_ = speed;
   }
   // Moves it on at once, whatever its speed.
   void step( Time by ) {
      const std::lock_guard lock( mutex_ );
      base_ += by;
   }

 private:
   Time at( Time real ) const {
      return base_ + std::chrono::duration_cast<Time>( ( real - since_ ) * speed_ );
   }

   const Bus::Clock &real_;
   mutable std::mutex mutex_;
   double speed_;
   Time base_{ 0 };
   Time since_ = real_.now();
};

} // namespace Simulator
