#pragma once

#include "host/HealthReport.h"
#include "host/State.h"
#include "host/commands/CommandLine.h"
#include "host/session/CageModule.h"

#include <optional>

namespace Host {

// What one round of a board gives.
struct BoardOnce {
   BoardReport report{}; // with the health of each object
   HealthReport health{};
   std::vector<CageModule> modules{};
   std::optional<Fault> loadFault{}; // the plug-in can't be loaded
   bool gaveUp = false;              // it took too long
};

// Brings a board up, reads each object once, and judges what is wrong. At a terminal the progress
// is shown.
//
// The modules in the cages are left out: reading them clears the flags that they keep for whoever
// watches over them. But for the one that is named so.
BoardOnce readOnce( const BoardFiles::Board &board, const Options &options,
                    const std::string &module = "" );

// Reads the module of a cage and nothing else; those of all cages where none is named.
BoardOnce readModulesOnce( const BoardFiles::Board &board, const std::string &cage,
                           const Options &options );

} // namespace Host
