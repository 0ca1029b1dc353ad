#pragma once

#include "host/session/CageModule.h"
#include "host/session/Supervisor.h"

#include <vector>

namespace Host {

// What is known of the modules in all cages of a board, in its order. `report` is the board's.
std::vector<CageModule> modulesOf( const BoardFiles::Board &board, const Supervisor &supervisor,
                                   const BoardReport &report, Time now );

} // namespace Host
