#pragma once

#include "smbus/Clock.h"

#include <cmath>

namespace Simulator {

// A value that approaches its target exponentially: in one time constant the difference shrinks to
// 1/e. When the difference is the resolution or less, the value is the target.
class Inertia {
 public:
   // Value and target start at zero. The clock outlives it.
   Inertia( const Bus::Clock &clock, std::chrono::duration<double> timeConstant,
            double resolution = 0.5 )
      : clock_( clock ), timeConstant_( timeConstant ), resolution_( resolution ) {}

   double value() const {
      const std::chrono::duration<double> passed = clock_.now() - since_;
      const double left = ( from_ - target_ ) * std::exp( -( passed / timeConstant_ ) );
      return std::abs( left ) <= resolution_ ? target_ : target_ + left;
   }
   double target() const { return target_; }
   void targetIs( double target ) {
      from_ = value();
      since_ = clock_.now();
      target_ = target;
   }
   void valueIs( double value ) { from_ = target_ = value; } // and the target

 private:
   const Bus::Clock &clock_;
   const std::chrono::duration<double> timeConstant_;
   const double resolution_;
   Bus::Clock::Time since_{ 0 };
   double from_ = 0;
   double target_ = 0;
};

} // namespace Simulator
