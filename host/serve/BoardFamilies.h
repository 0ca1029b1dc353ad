// Every family of metrics that serve gives; docs/metrics.md describes each.
#pragma once

#include "metrics/Family.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Host {

// A family, by what it tells.
enum class Metric : size_t {
   Build,
   Board,
   ProcessCpu,
   ProcessMemory,
   ProcessStart,
   ProcessDescriptors,
   ProcessDescriptorLimit,
   PlugInUp,
   ChildStarts,
   Rounds,
   RoundDuration,
   HttpRequests,
   BoardLevel,
   Causes,
   CauseSince,
   CauseAcknowledged,
   CauseHidden,
   ObjectCause,
   Events,
   RuleGood,
   RuleUnknown,
   RuleWanted,
   RuleNeeded,
   ObjectState,
   ObjectLevel,
   ObjectAge,
   Present,
   ValueState,
   ValueAge,
   ValueLevel,
   Signal,
   Slot,
   Module,
   BusTransfers,
   BusFailedTransfers,
   BusBytes,
   BusWireTime,
   BusBusyTime,
   BusErrors,
   BusFailedTransactions,
   BusTransaction,
   BusHeld,
   BusAccountsAge,
   Count
};

// What is told of numbers with a unit. Each has a family of its own for each unit.
enum class Told : size_t { Value, Limit, Lowest, Highest, Count };

// A unit of readings, and the base unit that metrics have in its place.
struct BaseUnit {
   std::string_view unit; // "mW"
   double inBase;         // how many make one of the base unit: 1000
   std::string_view name; // in the middle of the families' names: "light_power"
   std::string_view base; // at the end: "watts"
   std::string_view what; // "Power of light"
};
// Null for a unit that no metric has.
const BaseUnit *baseUnitOf( std::string_view unit );

class BoardFamilies {
 public:
   explicit BoardFamilies( Metrics::Format format );

   // All descriptions, in the order in which they are written.
   static const std::vector<Metrics::Description> &descriptions();

   Metrics::Family &operator[]( Metric metric ) { return families_[static_cast<size_t>( metric )]; }
   Metrics::Family &of( const BaseUnit &unit, Told told );

   std::string text() const { return Metrics::exposition( families_, format_ ); }

 private:
   const Metrics::Format format_;
   std::vector<Metrics::Family> families_{};
};

} // namespace Host
