// What the control socket's clients are told of the busses.
#pragma once

#include "smbus/Control.pb.h"
#include "smbusd/accounts/BusAccount.h"
#include "smbusd/accounts/Quarantine.h"

#include <vector>

namespace Smbusd {

// What is known of one bus. It outlives its use.
struct KnownBus {
   KnownBus( const BusAccount *passed, const Quarantine *leftAlone = nullptr )
      : account( passed ), quarantine( leftAlone ) {}

   const BusAccount *account;
   const Quarantine *quarantine; // null: nobody leaves a segment alone
};

// Answers a request for load or last. An unknown bus is an error that names those that there are.
SmbusControl::Response report( const SmbusControl::Request &, const std::vector<KnownBus> &,
                               Bus::Clock::Time now );

} // namespace Smbusd
