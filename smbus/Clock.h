#pragma once

#include <chrono>

namespace Bus {

// The time of a simulated board, or of transaction limits.
class Clock {
 public:
   using Time = std::chrono::nanoseconds; // since the start of this clock

   virtual ~Clock() = default;
   virtual Time now() const = 0; // thread-safe
};

class RealClock final : public Clock {
 public:
   Time now() const override { return std::chrono::steady_clock::now() - start_; }

 private:
   const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

inline double secondsIn( Clock::Time time ) {
   return std::chrono::duration<double>( time ).count();
}

} // namespace Bus
