#pragma once

#include "smbus/Clock.h"

namespace Simulator {

// Does what it is told some time later. A change of mind before that counts from the new order.
class LaggingSwitch {
 public:
   using Time = Bus::Clock::Time;

   LaggingSwitch( Time onAfter, Time offAfter ) : onAfter_( onAfter ), offAfter_( offAfter ) {}

   void told( bool on, Time now ) {
      if ( on == told_ )
         return;
      before_ = at( now );
      told_ = on;
      since_ = now;
   }
   void is( bool on ) { before_ = told_ = on; } // at once
   bool told() const { return told_; }
   bool at( Time now ) const {
      return now - since_ >= ( told_ ? onAfter_ : offAfter_ ) ? told_ : before_;
   }

 private:
   const Time onAfter_;
   const Time offAfter_;
   bool told_ = false;
   bool before_ = false;
   Time since_{ 0 };
};

} // namespace Simulator
