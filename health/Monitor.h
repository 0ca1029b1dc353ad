// Watches over a board: what is wrong with it, since when, and why.
#pragma once

#include "health/Inspection.h"
#include "health/ModuleChanges.h"

#include <map>
#include <string>
#include <vector>

namespace Health {

// Something that is wrong and has no other explanation.
struct Cause {
   std::string key{};
   std::string object{}; // empty: not an object of the board
   std::string value{};
   Level level = Level::Warning;
   std::string words{};
   WallTime since{};
   bool isAcknowledged = false;
   bool isHidden = false; // another cause hides it: nobody knows whether it is still there
   std::vector<std::string> explains{};
};

// Tells each cause once when it comes and once when it goes. What may only be the beginning of
// something larger is told after a time; a cause that can't be seen any more because of another one
// stays until it can.
class Monitor {
 public:
   // `board` must outlive this object. Seconds that a fault of the wiring has to last before it is
   // told: long enough that all that it takes with it was read once.
   Monitor( const BoardFiles::Board &board, double settle );

   // What has changed, in the order of the board; without ids.
   std::vector<Event> update( const BoardReport &report, const Surroundings &surroundings,
                              const Instant &now );
   // What was open when the last monitor of this board ended, from its events in the order of time.
   // Each is hidden until it can be seen whether it is still so.
   void resume( const std::vector<Event> &events, const Instant &now );

   // A person has seen it. Returns whether there is such a cause. A latched limit that is good
   // again is gone with the next update.
   bool acknowledge( const std::string &key, const Instant &now );
   // Limits of a value that the device behind the object knows: of a module itself, of the one that
   // any other object is on.
   void knows( size_t object, const std::string &value, const BoardFiles::ValueLimits &limits );

   // The worst first, then the oldest.
   std::vector<Cause> causes() const;
   // The worst of the causes. Indeterminate as long as nothing is known, or something is wrong and
   // there was no time yet to find out why.
   Level level() const;
   // Whether it has seen a report yet.
   bool hasLooked() const { return first_.has_value(); }
   // Of each rule of the board, as of the last update; none before the first.
   const std::vector<RuleCount> &rules() const { return rules_; }
   // Puts what is known of each value and object into a report.
   void describe( BoardReport &report ) const;
   // Adds the last numbers of each value to the report of one object, which was described.
   void addLast( size_t object, ObjectReport &report ) const;

 private:
   struct Open {
      Finding::Kind kind{};
      size_t object = noObject;
      std::vector<size_t> members{}; // objects that it kept from being read
      Cause cause{};
      Instant begun{};
   };

   void link( const Inspection &inspection );
   void tell( const Inspection &inspection, size_t finding, const Instant &now );
   void clear( const Inspection &inspection, const Instant &now );
   static bool isOver( const Open &open, const Inspection &inspection );

   const BoardFiles::Board &board_;
   const Links links_;
   const double settle_;
   Watches watches_;
   KnownLimits known_{};
   ModuleChanges changes_;
   std::map<std::string, Open> open_{};
   std::map<std::string, Instant> pending_{}; // since when it was found
   std::optional<Instant> first_{};           // update
   bool isNew_ = true;                        // it has not lasted as long as settling takes
   // of the last update:
   std::vector<std::vector<size_t>> roots_{}; // of each finding
   std::vector<std::string> causeOf_{};       // by object
   std::vector<Level> levels_{};              // by object
   std::vector<Reach> reaches_{};             // by object
   std::vector<RuleCount> rules_{};
   std::vector<Event> events_{};
};

} // namespace Health
