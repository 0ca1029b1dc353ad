#pragma once

#include "health/Monitor.h"

#include <vector>

namespace Host {

// What is wrong with a board, for users.
struct HealthReport {
   Health::Level level = Health::Level::Indeterminate;
   std::vector<Health::Cause> causes{}; // the worst first
   size_t objects = 0;                  // without those whose modules are not there and need not be
   size_t good = 0;   // of them: those of which everything is known, and nothing is wrong
   size_t absent = 0; // those
};

// `board` was described by the monitor.
HealthReport healthOf( const Health::Monitor &monitor, const Health::BoardReport &board );

} // namespace Host
