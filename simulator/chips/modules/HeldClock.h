#pragma once

#include "smbus/Clock.h"

namespace Simulator {

// A clock that can be held for a while, so that all that is computed meanwhile is of one moment.
class HeldClock final : public Bus::Clock {
 public:
   explicit HeldClock( const Bus::Clock &clock ) : clock_( clock ) {}

   Time now() const override { return holds_ > 0 ? held_ : clock_.now(); }

   class Hold {
    public:
      explicit Hold( HeldClock &clock ) : clock_( clock ) {
         if ( clock.holds_++ == 0 )
            clock.held_ = clock.clock_.now();
      }
      ~Hold() { --clock_.holds_; }
      Hold( const Hold & ) = delete;
      Hold &operator=( const Hold & ) = delete;

    private:
      HeldClock &clock_;
   };

 private:
   const Bus::Clock &clock_;
   unsigned holds_ = 0;
   Time held_{ 0 };
};

} // namespace Simulator
