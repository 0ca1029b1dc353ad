#pragma once

#include "smbus/Clock.h"

#include <atomic>

namespace TestSupport {

// Only the test moves it.
class ManualClock final : public Bus::Clock {
 public:
   Time now() const override { return now_.load(); }
   void advance( Time by ) { now_ = now_.load() + by; }

 private:
   std::atomic<Time> now_{ Time( 0 ) };
};

} // namespace TestSupport
