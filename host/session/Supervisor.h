#pragma once

#include "boardfiles/Board.h"
#include "host/plugin/Messages.h"
#include "host/plugin/SharedPage.h"
#include "host/session/BoardRecord.h"
#include "host/session/ChildDeaths.h"
#include "host/session/CurrentCommand.h"
#include "host/session/Limits.h"
#include "host/session/ModuleRecords.h"
#include "host/session/PendingActions.h"
#include "host/session/ReadingClassifier.h"
#include "host/session/Schedule.h"

#include <functional>
#include <optional>
#include <string>

namespace Host {

// Runs a board through a child: passes what the child says to the classes that schedule, classify
// and record, and gives the next command. It has no process and no clock of its own. Its caller
// starts and ends children, and gives the time.
class Supervisor {
 public:
   using Answer = PendingActions::Answer;
   // Why the plug-in's server can't be reached; empty when that is not known.
   using ServerProbe = std::function<std::string()>;

   // `board` must outlive this object.
   Supervisor(
      const BoardFiles::Board &board, Limits limits, Time now,
      ServerProbe probe = [] { return std::string(); } );
   Supervisor( const Supervisor & ) = delete;
   Supervisor &operator=( const Supervisor & ) = delete;

   // Whether a child should be running.
   bool wantsChild( Time now ) const { return deaths_.mayStart( now ); }
   void childStarted();
   // The system refused to start a child, for example because there are no free descriptors. `why`
   // becomes the fault of all objects.
   void childNotStarted( const std::string &why, Time now );
   // The command to send now; nothing while one is running or none is due.
   std::optional<Command> next( Time now );
   void heard( const Event &event, Time now );
   // The operation in which the child is, or was when it died; nothing between operations. To be
   // told before anything is asked that depends on it: tick(), overdue(), childDied() and
   // operation().
   void operationIs( const std::optional<SharedPage::Operation> &operation, Time now );
   // `why` becomes the fault of the object whose operation was running.
   void childDied( const std::string &why, Time now );

   // Why the child must be ended now because it takes too long, as words for childDied().
   std::optional<std::string> overdue( Time now ) const { return current_.overdue( now ); }
   // Updates what users see while the plug-in waits for its server. To be called at wakeAt().
   void tick( Time now );
   // When to call tick() and next() again if no event comes before.
   Time wakeAt( Time now ) const;

   // Has an object do something as soon as it is up. An object that failed to come up answers at
   // once with its fault.
   void ask( size_t object, const Action &action, Answer answer, Time now );

   BoardReport report( Time now ) const { return record_.report( now ); }
   // The limits of the supply behind an SMBus object that reads its status.
   const std::vector<Health::Pmbus::Limit> &limits( size_t object ) const {
      return record_.limits( object );
   }
   // What was last read of the module that is this object. Null when nothing was.
   const ModuleRecord *module( size_t object ) const { return modules_.find( object ); }
   // When the board was under control last: now, while the plug-in's process has nothing to do,
   // else when it last said something of an object. Nothing: it never did.
   std::optional<Time> inControl( Time now ) const {
      return isInOrder_ && !current_.isRunning() ? now : lastSign_;
   }
   // How many objects were brought up, or failed, at least once.
   size_t settled() const { return schedule_.settled(); }
   // Whether the child has a command that it did not answer yet.
   bool isRunning() const { return current_.isRunning(); }
   // Whether every object that can be read was read since its turn came last.
   bool roundDone() const { return !current_.isRunning() && schedule_.roundDone(); }
   // How many rounds were begun.
   size_t rounds() const { return schedule_.rounds(); }
   // The rounds in which all was read that was due.
   struct WholeRounds {
      uint64_t count = 0;
      std::optional<Clock::duration> last{}; // how long it took
   };
   const WholeRounds &wholeRounds() const { return wholeRounds_; }
   // How many children were started.
   uint64_t childStarts() const { return childStarts_; }
   // Set when the plug-in can't be loaded. Nothing is tried after that.
   const std::optional<Fault> &loadFault() const { return loadFault_; }
   // Why the plug-in can't be used: it can't be loaded; or its process can't be started, or has
   // ended for no reason that an object gave, and the next one isn't as far yet. Empty: it can.
   std::string plugInFault() const;
   // The running operation as pl.h names it; empty when none runs.
   std::string operation() const { return current_.operation(); }

 private:
   void beginAnew();
   void forgetDeath( Time now );
   void ended( const LoadCommand &, const Done &, Time );
   void ended( const InitCommand &command, const Done &done, Time now );
   void ended( const AddCommand &command, const Done &done, Time now );
   void ended( const ReadCommand &command, const Done &done, Time now );
   void ended( const ActCommand &command, const Done &done, Time now );
   void heardReading( Reading reading, Time now );
   void heardPresence( size_t module, const Reading &presence, Time now );
   void heardMemory( size_t module, const Reading &memory, Time now );
   void refuse( size_t object );
   void failPlugin( const Fault &fault );
   void fail( size_t object, const Fault &fault, Time now );
   void failKind( BoardFiles::Kind kind, const Fault &fault, Time now );
   void failConnection( const Fault &fault, Time now );
   Fault connectionFault( Fault fault ) const;

   const BoardFiles::Board &board_;
   const Limits limits_;
   const ServerProbe probe_;
   Schedule schedule_;
   CurrentCommand current_;
   ChildDeaths deaths_{};
   ReadingClassifier classifier_;
   BoardRecord record_;
   ModuleRecords modules_{};
   PendingActions actions_{};
   std::optional<Fault> loadFault_{};
   std::optional<Fault> startFault_{}; // why there is no child
   std::string death_{};               // how the last child ended, until the next is as far
   std::optional<Reading> result_{};   // of the running action
   std::optional<Time> roundBegan_{};  // only while something of it was not read yet
   WholeRounds wholeRounds_{};
   uint64_t childStarts_ = 0;
   bool isInOrder_ = false; // the child has carried out something with an object
   std::optional<Time> lastSign_{};
};

} // namespace Host
