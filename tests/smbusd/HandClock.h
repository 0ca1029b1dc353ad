#pragma once

#include "Clock.h"

#include <atomic>

namespace SmbusdTest {

// Stands still until the test turns it.
class HandClock final : public Smbusd::Clock {
 public:
   Time now() const override { return now_.load(); }
   void advance( Time by ) { now_ = now_.load() + by; }

 private:
   std::atomic<Time> now_{ Time( 0 ) };
};

} // namespace SmbusdTest
