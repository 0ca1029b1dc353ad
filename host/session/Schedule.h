#pragma once

#include "boardfiles/Board.h"
#include "host/plugin/Messages.h"
#include "host/session/BackOff.h"
#include "host/session/Limits.h"
#include "host/session/ModuleTurns.h"
#include "host/session/PendingActions.h"

#include <map>
#include <optional>
#include <vector>

namespace Host {

// Decides which command the child gets next, and when. Knows of every kind and object how far it is
// brought up and when it may be tried again, but no values and no faults.
class Schedule {
 public:
   // `board` and `limits` must outlive this object.
   Schedule( const BoardFiles::Board &board, const Limits &limits, Time now );

   // A new child has no plug-in yet, and no objects.
   void childStarted();
   void pluginLoaded() { loaded_ = true; }
   void kindReady( BoardFiles::Kind kind );
   void kindFailed( BoardFiles::Kind kind, Time now );
   void objectUp( size_t object );
   // `again`: it is to be read once more in this round.
   void objectRead( size_t object, bool again = false );
   // What a cage says of its module. Returns whether that is new.
   bool modulePresenceIs( size_t module, bool isThere, Time now );
   void modulePresenceIsUnknown( size_t module ) { modules_.presenceIsUnknown( module ); }
   void moduleRead( size_t module, Time now );
   // The module didn't answer. Returns whether it isn't only busy.
   bool moduleMissed( size_t module, Time now );
   void objectFailed( size_t object, Time now );
   // The object ended the child. The bus may only have missed one acknowledge, so where everything
   // is read just once, it is tried a few times more, after the others.
   void objectEndedChild( size_t object, Time now );

   // The next command; nothing when there is nothing to do now.
   std::optional<Command> next( const PendingActions &actions, Time now );
   // The next time after `now` at which something may be done, at most a period later.
   Time wakeAt( Time now ) const;

   const std::vector<BoardFiles::Kind> &kinds() const { return kindOrder_; }
   bool isReady( BoardFiles::Kind kind ) const;
   // Whether the object is up in the child that runs now.
   bool isUp( size_t object ) const { return objects_[object].up; }
   // Whether the object failed, and its next try is later than `now`.
   bool isBackingOff( size_t object, Time now ) const;
   // The same, of the object or its kind.
   bool mustWait( size_t object, Time now ) const;

   const ModuleTurns &modules() const { return modules_; }

   // How many objects were brought up, or failed, at least once.
   size_t settled() const;
   // Whether every object is settled, and none has yet to be read in this round.
   bool roundDone() const;
   // How many rounds were begun. The turns of modules are none.
   size_t rounds() const { return rounds_; }

 private:
   struct Object {
      bool up = false;      // in the child that runs now
      bool tried = false;   // at least once, or its kind was
      bool pending = false; // to be read in this round
      bool again = false;   // to be tried once more after the others
      unsigned deaths = 0;  // of children, where everything is read just once
      BackOff backOff{};
   };
   struct Kind {
      bool ready = false; // in the child that runs now
      BackOff backOff{};
      Time nextRound{};
   };

   bool needs( size_t object ) const;
   bool canAdd( size_t object, Time now ) const;
   bool wantsAdd( size_t object, Time now ) const;
   void startRounds( Time now );
   std::optional<Command> nextRead( Time now );
   bool isDue( size_t object, Time now ) const;
   // The object, and the others of its group that are due.
   std::vector<size_t> dueOfGroup( size_t object, Time now ) const;
   void backOff( BackOff &of, Time now ) const;

   const BoardFiles::Board &board_;
   const Limits &limits_;
   const std::vector<size_t> groups_; // of the objects that are read together
   ModuleTurns modules_;
   std::vector<Object> objects_;
   std::map<BoardFiles::Kind, Kind> kinds_{};
   std::vector<BoardFiles::Kind> kindOrder_{}; // as the board's files name them first
   bool loaded_ = false;
   size_t rounds_ = 0;
   size_t nextRead_ = 0; // the object at which the search for the next reading starts
};

} // namespace Host
