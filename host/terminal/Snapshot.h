// What watch knows of a board at one time.
#pragma once

#include "host/HealthReport.h"
#include "host/State.h"
#include "host/session/CageModule.h"
#include "host/terminal/BusUse.h"
#include "host/terminal/ObjectText.h"

#include <optional>
#include <string>
#include <vector>

namespace Host {

struct Snapshot {
   std::string board{};
   Health::WallTime now{};
   BoardReport objects{};
   HealthReport health{};
   std::optional<std::vector<CageModule>> modules{}; // nothing: only a serve reads them
   std::vector<BusUse> busses{};
   std::string whyNoBusses{};
   std::string trouble{};                // why what follows may be old; empty: it is not
   double older = 0;                     // seconds that all of it is older than it says itself
   std::optional<ObjectReport> detail{}; // of the object that is looked at, with its last readings
   NumbersByValue history{}; // its numbers in the last ten minutes, where a serve has them
};

} // namespace Host
