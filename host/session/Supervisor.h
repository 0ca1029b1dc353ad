#pragma once

#include "boardfiles/Board.h"
#include "host/plugin/Messages.h"
#include "host/session/BackOff.h"
#include "host/session/FaultWords.h"
#include "host/session/ObjectRecord.h"
#include "host/session/PendingActions.h"
#include "host/session/Polls.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Host {

inline Clock::duration fromSeconds( double seconds ) {
   return std::chrono::duration_cast<Clock::duration>( std::chrono::duration<double>( seconds ) );
}

// How long things may take.
struct Limits {
   using Duration = Clock::duration;
   Duration init = std::chrono::seconds( 40 ); // one pl_<type>_init; it tries for 30 s itself
   Duration step = std::chrono::seconds( 12 ); // any other command; the client gives up at 10 s
   Duration patience =
      std::chrono::milliseconds( 500 );         // before an init is told to users as waiting
   Duration period = std::chrono::seconds( 1 ); // between two readings of an object
   int staleAfter = 3;                          // periods that a value is good for
   bool once = false;                           // read every object once, try nothing again
   std::optional<size_t> only{}; // bring up no more than this object needs; read nothing
   std::map<BoardFiles::Kind, Duration> periods{}; // of kinds that have one of their own

   Duration periodOf( BoardFiles::Kind kind ) const {
      const auto own = periods.find( kind );
      return own == periods.end() ? period : own->second;
   }
};

// Decides what the child does next, and keeps what is known of every object. Knows no process and
// no clock: both are told to it.
class Supervisor {
 public:
   using Answer = Asked::Answer;

   Supervisor( const BoardFiles::Board &board, Limits limits, Time now );

   // Whether a child should be running.
   bool wantsChild( Time now ) const { return now >= childNotBefore_; }
   void childStarted();
   // The command to send now; nothing while one is in hand or none is due.
   std::optional<Command> next( Time now );
   void heard( const Event &event, Time now );
   // The child is dead; what it had in hand, if anything, is to blame.
   void childDied( const std::string &cause, Time now );

   // Whether the command in hand took too long, so that the child must be ended; the words for
   // childDied().
   std::optional<std::string> overdue( Time now ) const;
   // Marks what can be told about waiting. To be called at the times of wakeAt().
   void tick( Time now );
   // When to look again though nothing was heard.
   Time wakeAt( Time now ) const;

   // Has an object do something as soon as it stands. An object that can't be brought up answers
   // at once with its fault.
   void ask( size_t object, const Action &action, Answer answer, Time now );

   BoardReport report( Time now ) const;
   // How many objects were brought up or failed to be, at least once.
   size_t settled() const;
   // Whether every object that can be read was read since the last time its turn came.
   bool roundDone() const;
   // Set when the plug-in can't be loaded: there is nothing more to try.
   const std::optional<Fault> &loadFault() const { return loadFault_; }
   // What is in hand, in the words of pl.h; empty when nothing is.
   std::string inHand() const;

 private:
   struct Object {
      ObjectRecord record;
      bool stands = false; // in the child that runs now
      bool tried = false;  // ever, be it with its kind
      bool due = false;    // to be read
      bool blinks = false; // is an LED that was told to, and needs a child for it
      Time notBefore{};    // the next try of what failed
      BackOff backOff{};
   };
   struct KindState {
      bool ready = false; // in the child that runs now
      Time notBefore{};
      BackOff backOff{};
      Time nextRound{};
   };
   struct InHand {
      Command command;
      Time since;
      std::string operation{}; // once it began
   };

   std::optional<Command> choose( Time now );
   void startRound( Time now );
   void done( const LoadCommand &, const Done &, Time );
   void done( const InitCommand &command, const Done &done, Time now );
   void done( const AddCommand &command, const Done &done, Time now );
   void done( const ReadCommand &command, const Done &done, Time now );
   void done( const ActCommand &command, const Done &done, Time now );
   void heardTrace( const Trace &trace, Time now );
   bool needs( size_t object ) const;
   void refuse( size_t object );
   void judgeAbsence( Reading &reading, const BoardFiles::ObjectDescription &slot ) const;
   void record( size_t object, Reading reading, Time now );
   void take( const Reading &reading, Time now );
   void blame( const Command &command, const Fault &fault, Time now );
   void fail( size_t object, const Fault &fault, Time now );
   void failKind( BoardFiles::Kind kind, const Fault &fault, Time now );
   void failConnection( const Fault &fault, Time now );
   bool wantsAdd( const Object &object, BoardFiles::Kind kind, Time now ) const;

   const BoardFiles::Board &board_;
   const Limits limits_;
   FaultWords words_;
   std::vector<Object> objects_;
   std::map<BoardFiles::Kind, KindState> kinds_{};
   std::vector<BoardFiles::Kind> kindOrder_{};
   bool loaded_ = false;
   Time childNotBefore_{};
   BackOff childBackOff_{};
   std::optional<InHand> inHand_{};
   std::optional<Fault> loadFault_{};
   Asked asked_{};
   size_t nextRead_ = 0;             // where to look first for an object that is due
   std::optional<Reading> result_{}; // of the action in hand
   Polls polls_;
};

} // namespace Host
