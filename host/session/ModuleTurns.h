#pragma once

#include "boardfiles/Board.h"
#include "host/session/BackOff.h"
#include "host/session/Limits.h"

#include <map>
#include <optional>
#include <vector>

namespace Host {

// When the memory of each module is read: not while its cage is empty; not before a module that was
// just plugged had the time to start; and then once in each period, each at another moment, so that
// the modules of a bus don't keep it busy all at once. A module that doesn't answer may be busy: it
// is asked again soon.
class ModuleTurns {
 public:
   // `board` and `limits` must outlive this object.
   ModuleTurns( const BoardFiles::Board &board, const Limits &limits );

   bool isModule( size_t object ) const { return modules_.contains( object ); }
   const std::vector<size_t> &objects() const { return objects_; }
   // The module in a cage; nothing where the board names none.
   std::optional<size_t> moduleIn( size_t cage ) const;

   // What the cage says. Returns whether that is new.
   bool presenceIs( size_t module, bool isThere, Time now );
   // Nobody knows whether a module is there.
   void presenceIsUnknown( size_t module ) { modules_.at( module ).isFresh = true; }
   bool isDue( size_t module, Time now ) const;
   // Where each is read once: also while its cage doesn't say whether it is there.
   bool mayBeRead( size_t module, Time now ) const {
      return !modules_.at( module ).isThere || isDue( module, now );
   }
   // The next time at which it may be due; Time::max() while its cage is empty.
   Time next( size_t module ) const;
   // It may be another one than the one that was last read well.
   bool isFresh( size_t module ) const { return modules_.at( module ).isFresh; }
   // A new child knows no module.
   void childStarted();

   void wasRead( size_t module, Time now );
   // Returns whether it has failed so often that it isn't only busy.
   bool wasMissed( size_t module, Time now );

   static constexpr unsigned missesAtMost = 3; // in a row, of a module that is only busy

 private:
   struct Module {
      size_t number = 0; // among the modules
      bool isSfp = false;
      std::optional<bool> isThere{}; // as the cage said last
      bool isFresh = true;
      unsigned misses = 0;
      Time next{};
   };

   Time nextTurn( const Module &module, Time now ) const;

   const Limits &limits_;
   std::vector<size_t> objects_{};
   std::map<size_t, Module> modules_{}; // by object
   std::map<size_t, size_t> inCage_{};
};

} // namespace Host
