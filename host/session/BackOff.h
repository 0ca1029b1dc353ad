#pragma once

#include <algorithm>
#include <chrono>

namespace Host {

using Clock = std::chrono::steady_clock;
using Time = Clock::time_point;

// How long to wait before what failed is tried again: 1 s, twice as long after every further
// failure, 60 s at the most, and 1 s again once it went well.
class BackOff {
 public:
   static constexpr Clock::duration first = std::chrono::seconds( 1 );
   static constexpr Clock::duration longest = std::chrono::seconds( 60 );

   // The time of the next try after a failure at `now`.
   Time failed( Time now ) {
      const Time next = now + wait_;
      wait_ = std::min( 2 * wait_, longest );
      return next;
   }
   void succeeded() { wait_ = first; }

 private:
   Clock::duration wait_ = first;
};

} // namespace Host
