#pragma once

#include "host/HealthReport.h"
#include "host/State.h"
#include "host/commands/CommandLine.h"

#include <optional>

namespace Host {

// What one round of a board gives.
struct BoardOnce {
   BoardReport report{}; // with the health of each object
   HealthReport health{};
   std::optional<Fault> loadFault{}; // the plug-in can't be loaded
   bool gaveUp = false;              // it took too long
};

// Brings a board up, reads each object once, and judges what is wrong. At a terminal the progress
// is shown.
BoardOnce readOnce( const BoardFiles::Board &board, const Options &options );

} // namespace Host
