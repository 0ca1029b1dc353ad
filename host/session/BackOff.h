#pragma once

#include <algorithm>
#include <chrono>

namespace Host {

using Clock = std::chrono::steady_clock;
using Time = Clock::time_point;

// When to try again what failed: after 1 s, then after twice as long each time, but never more than
// 60 s. After a success the next failure waits 1 s again.
class BackOff {
 public:
   static constexpr Clock::duration first = std::chrono::seconds( 1 );
   static constexpr Clock::duration longest = std::chrono::seconds( 60 );

   bool mayTry( Time now ) const { return now >= nextTry_; }
   Time nextTry() const { return nextTry_; }

   void failed( Time now ) {
      nextTry_ = now + wait_;
      wait_ = std::min( 2 * wait_, longest );
   }
   void succeeded() { wait_ = first; }
   // Allows no further try.
   void giveUp() { nextTry_ = Time::max(); }

 private:
   Time nextTry_{};
   Clock::duration wait_ = first;
};

} // namespace Host
