// What the control socket's clients are told of the busses.
#pragma once

#include "smbus/Control.pb.h"
#include "smbusd/accounts/BusAccount.h"

#include <vector>

namespace Smbusd {

using Accounts = std::vector<const BusAccount *>; // they outlive their use

// Answers a request for load or last. An unknown bus is an error that names those that there are.
SmbusControl::Response report( const SmbusControl::Request &, const Accounts &,
                               Bus::Clock::Time sinceStart );

} // namespace Smbusd
