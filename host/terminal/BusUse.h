// How busy the root busses are, from two answers of the server's accounts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Host {

// What has passed on a bus since the server's start.
struct BusCounts {
   std::string bus{};
   uint64_t transfers = 0;
   uint64_t failures = 0;
   double wireSeconds = 0;
   std::vector<std::pair<std::string, uint64_t>> errors{}; // by their kind
};
struct BusAccounts {
   double seconds = 0; // since the server's start
   std::vector<BusCounts> busses{};
};
// The accounts in JSON; nothing when the text is no such.
std::optional<BusAccounts> readBusses( const std::string &json );

struct BusUse {
   std::string bus{};
   double share = 0; // of the time, of its wires
   double transfersPerSecond = 0;
   uint64_t failures = 0;
   std::string errors{}; // "3 nack, 1 timeout"
   BusCounts all{};      // since the server's start
};
// Between the two; since the server's start where there is no earlier one, or it has started anew.
std::vector<BusUse> useBetween( const std::optional<BusAccounts> &before, const BusAccounts &now );

} // namespace Host
