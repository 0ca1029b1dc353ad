#pragma once

#include <chrono>

namespace Bus {

// The one source of time of a simulated board, or of a transaction's limit.
class Clock {
 public:
   using Time = std::chrono::nanoseconds; // since a start that is the clock's own

   virtual ~Clock() = default;
   virtual Time now() const = 0; // called from any thread
};

class RealClock final : public Clock {
 public:
   Time now() const override { return std::chrono::steady_clock::now() - start_; }

 private:
   const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

} // namespace Bus
