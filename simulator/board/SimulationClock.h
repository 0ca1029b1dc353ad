#pragma once

#include "smbus/Clock.h"

#include <mutex>

namespace Simulator {

// The time of a simulation: real time, faster or slower by a factor, or standing still and moved on
// by hand. It never goes back. For all threads.
class SimulationClock final : public Bus::Clock {
 public:
   // Where it stops: the nanoseconds have no room for 300 years.
   static constexpr Time end = std::chrono::hours( 24 * 365 * 250L );

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
   // Moves it on at once, whatever its speed. False, and it stays, where that is beyond its end.
   bool step( Time by ) {
      const std::lock_guard lock( mutex_ );
      if ( by > end - at( real_.now() ) )
         return false;
      base_ += by;
      return true;
   }

 private:
   Time at( Time real ) const {
      const auto run = std::chrono::duration<double, Time::period>( real - since_ ) * speed_;
      return run < end - base_ ? base_ + std::chrono::duration_cast<Time>( run ) : end;
   }

   const Bus::Clock &real_;
   mutable std::mutex mutex_;
   double speed_;
   Time base_{ 0 };
   Time since_ = real_.now();
};

} // namespace Simulator
