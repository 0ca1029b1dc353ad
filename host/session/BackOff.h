#pragma once

#include <algorithm>
#include <chrono>

namespace Host {

using Clock = std::chrono::steady_clock;
using Time = Clock::time_point;

// When to try again what failed: after the first waiting time, then after twice as long each time,
// but never more than the longest. After a success the next failure waits the first time again.
class BackOff {
 public:
   explicit BackOff( Clock::duration first = std::chrono::seconds( 1 ),
                     Clock::duration longest = std::chrono::seconds( 60 ) )
      : first_( first ), longest_( longest ) {}

   bool mayTry( Time now ) const { return now >= nextTry_; }
   Time nextTry() const { return nextTry_; }

   void failed( Time now ) {
      nextTry_ = now + wait_;
      wait_ = std::min( 2 * wait_, longest_ );
   }
   void succeeded() { wait_ = first_; }
   // Allows no further try.
   void giveUp() { nextTry_ = Time::max(); }

 private:
   Clock::duration first_, longest_;
   Clock::duration wait_ = first_;
   Time nextTry_{};
};

} // namespace Host
