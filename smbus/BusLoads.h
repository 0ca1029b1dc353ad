// How busy the server's busses were between two answers to a request for load. Where an entry was
// not there before, or has smaller figures now, it is a new one.
#pragma once

#include "smbus/Control.pb.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Bus {

struct Load {
   double wires = 0; // shares of the time
   double busy = 0;
   uint64_t transfers = 0;
   uint64_t failures = 0;

   Load &operator+=( const Load &other );
};
Load loadBetween( const SmbusControl::Totals &before, const SmbusControl::Totals &now,
                  double seconds );

// Seconds from the request to the answer.
struct WaitingTimes {
   double median = 0;
   double ninetyNinth = 0; // of a hundred
   double worst = 0;
};
WaitingTimes waitingTimesBetween( const SmbusControl::BusLoad &before,
                                  const SmbusControl::BusLoad &now );

// By their reason: "nack", "pec", "timeout", "held-low", "other".
std::vector<std::pair<const char *, uint64_t>> errorsBetween( const SmbusControl::Errors &before,
                                                              const SmbusControl::Errors &now );

const char *nameOf( SmbusControl::ChipLoad::Failure failure );

// In these words, which are also the error of a request that was refused without a transfer.
inline constexpr std::string_view isQuarantined = "is quarantined";
// What is quarantined, for how long now, why, and until when, for people.
std::string describe( const SmbusControl::Quarantined &segment );
// Who holds the lease of the board, or what was done since it was over, for people.
std::string describe( const SmbusControl::LeaseState &lease );

// The same entry before; an empty one when there was none.
const SmbusControl::BusLoad &earlier( const SmbusControl::Response &before,
                                      const SmbusControl::BusLoad &bus );
const SmbusControl::Segment &earlier( const SmbusControl::BusLoad &before,
                                      const SmbusControl::Segment &segment );
const SmbusControl::ChipLoad &earlier( const SmbusControl::Segment &before,
                                       const SmbusControl::ChipLoad &chip );
const SmbusControl::Client &earlier( const SmbusControl::BusLoad &before,
                                     const SmbusControl::Client &client );

// All of it as one JSON object. Before: an empty response for all since the server's start.
std::string loadsAsJson( const SmbusControl::Response &before, const SmbusControl::Response &now );

} // namespace Bus
