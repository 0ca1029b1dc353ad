#pragma once

#include "boardfiles/SafeStateFile.h"
#include "host/session/BackOff.h"

#include <optional>

namespace SmbusControl {
class Request;
}

namespace Host {

// What a host asks the server for so that the board is never left without control: to carry out the
// writes of the board's safe state when the host is silent for the time of the lease.
class Lease {
 public:
   // Between two renewals.
   static constexpr auto period = std::chrono::seconds( 1 );
   // A renewal is as old as this, at most, when the host stops.
   static constexpr auto slack = std::chrono::milliseconds( 1500 );

   // `limit` is how long an operation of the plug-in may take. The lease is longer than that and a
   // new start of the plug-in's process together, whatever the board says.
   Lease( const BoardFiles::SafeState &state, Clock::duration limit );

   Clock::duration time() const { return time_; }
   // What to ask for now; nothing where the board was not under control for the time of the lease,
   // or never. `inControl` is when it was last.
   std::optional<SmbusControl::Request> renewal( std::optional<Time> inControl, Time now ) const;

 private:
   const BoardFiles::SafeState &state_;
   const Clock::duration time_;
};

} // namespace Host
