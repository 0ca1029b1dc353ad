// What is wrong with a board at one moment.
#pragma once

#include "boardfiles/Board.h"
#include "health/Evidence.h"
#include "health/Finding.h"
#include "health/Instant.h"
#include "health/State.h"
#include "health/ValueWatch.h"
#include "health/Wiring.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Health {

// What is known beside the readings.
struct Surroundings {
   std::string plugIn{}; // why its process doesn't run; empty: it does
   std::string
      server{}; // why the plug-in's server can't be reached; empty: it can, or nobody knows
   std::optional<Evidence> evidence{}; // nothing: the server gives none
};

// The watch over each value of an object, in the order of its report.
struct WatchedValue {
   std::string name{};
   ValueWatch watch;
};
using Watches = std::vector<std::vector<WatchedValue>>;

// Limits that devices know themselves, by object and value.
using KnownLimits = std::map<size_t, std::map<std::string, BoardFiles::ValueLimits, std::less<>>>;

// How many members of a rule are good, and of how many nobody knows.
struct RuleCount {
   size_t good = 0;
   size_t unknown = 0;
};

// What the objects of a board have to do with each other, by their numbers.
struct Links {
   explicit Links( const BoardFiles::Board &board );

   std::vector<std::optional<size_t>> on{};    // which object each one is on
   std::vector<std::optional<size_t>> fan{};   // which fan each one follows
   std::vector<std::vector<size_t>> members{}; // of each rule
   std::vector<size_t> order{};                // what others are on comes before these
};

// Finds all that is wrong, and what explains it: a module that isn't there what is on it, a part of
// the wiring what is behind it, and so on. It has no memory but the watches.
class Inspection {
 public:
   // All must outlive this object.
   Inspection( const BoardFiles::Board &board, const Links &links, const BoardReport &report,
               const Surroundings &surroundings, const KnownLimits &known, Watches &watches,
               const Instant &now );

   // The value with what a supply says of itself.
   static constexpr auto registers = "status_registers";
   // The value with what a module warns of: "ok", or "rx_power_2 low alarm, rx_los 2".
   static constexpr auto flags = "flags";
   // The value of a slot or a cage that tells whether there is a module.
   static constexpr auto presence = "presence";

   const Findings &findings() const { return findings_; }
   // Of each rule of the board.
   const std::vector<RuleCount> &rules() const { return rules_; }
   Reach reach( size_t object ) const { return reach_[object]; }
   // Whether it can be said now that the value is good: it was read. Empty: any of the object.
   bool isKnown( size_t object, const std::string &value ) const;
   // Whether it is, or is on, a module that isn't there and need not be: it took its faults along.
   bool isGone( size_t object ) const;
   // Whether the supply's registers were read.
   bool isKnownOfSupply( size_t supply ) const;

 private:
   void findReaches();
   void inspect( size_t object );
   void inspectValues( size_t object );
   Finding limitFinding( size_t object, size_t value ) const;
   bool isModule( size_t object ) const;
   void inspectModule( size_t object );
   using LimitsByQuantity = std::map<std::string, size_t>; // findings
   void inspectFlags( size_t object, const LimitsByQuantity &limits );
   void inspectFollowing( size_t object );
   void inspectSupply( size_t object );
   void inspectRule( size_t rule );
   void watch( size_t object );

   size_t add( Finding finding );
   size_t addOnce( const Finding &finding );
   std::optional<size_t> explanationOf( size_t object );
   std::optional<size_t> absentAt( size_t object ) const;
   std::optional<size_t> supplyOf( size_t object, const std::map<size_t, size_t> &findings ) const;
   std::optional<size_t> explanationOfLimit( size_t object ) const;

   const BoardFiles::Board &board_;
   const Links &links_;
   const BoardReport &report_;
   const Surroundings &surroundings_;
   const KnownLimits &known_;
   Watches &watches_;
   const Instant now_;
   std::vector<Reach> reach_{};
   Wiring wiring_;
   Findings findings_{};
   std::vector<RuleCount> rules_{};
   std::map<std::string, size_t, std::less<>> byKey_{};
   std::map<size_t, size_t> dead_{};       // findings of supplies without output, by object
   std::map<size_t, size_t> fansFailed_{}; // of supplies that tell of a fan
   std::map<size_t, size_t> hot_{};        // of supplies that tell that they are too hot
};

} // namespace Health
