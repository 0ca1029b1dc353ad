// What serve knows of a board, as metrics.
#pragma once

#include "boardfiles/Board.h"
#include "health/Monitor.h"
#include "host/HealthReport.h"
#include "host/State.h"
#include "host/serve/Events.h"
#include "host/serve/LastLoads.h"
#include "host/serve/ProcessFigures.h"
#include "host/session/Supervisor.h"
#include "metrics/Format.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace Host {

// How serve itself works.
struct ServeFigures {
   ProcessFigures process{};
   bool hasPlugIn = true;
   uint64_t childStarts = 0;
   uint64_t rounds = 0;
   std::optional<double> roundDuration{};   // seconds, of the last whole one
   std::map<unsigned, uint64_t> requests{}; // answers, by their status code
};

ServeFigures serveFigures( const Supervisor &supervisor,
                           const std::map<unsigned, uint64_t> &requests );

struct BoardFigures {
   const BoardFiles::Board &board;
   std::string name{};   // the board's, for clients
   BoardReport report{}; // was described by a monitor
   Health::Level level = Health::Level::Indeterminate;
   std::vector<Health::Cause> causes{};
   std::vector<Health::RuleCount> rules{};
   EventCounts events{};
   ServeFigures serve{};
   KnownLoads loads{};
};

// What isn't known is left out.
std::string boardMetrics( const BoardFigures &figures, Metrics::Format format );

} // namespace Host
