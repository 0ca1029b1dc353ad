#pragma once

#include "health/Event.h"

#include <chrono>

namespace Health {

// A moment by both clocks: durations count on the one, people read the other.
struct Instant {
   std::chrono::steady_clock::time_point steady{};
   WallTime wall{};
};

inline double secondsBetween( const Instant &from, const Instant &to ) {
   return std::chrono::duration<double>( to.steady - from.steady ).count();
}

} // namespace Health
