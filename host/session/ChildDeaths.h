#pragma once

#include "host/session/BackOff.h"
#include "host/session/CurrentCommand.h"

namespace Host {

// What made a child die.
struct DeathCause {
   enum class What {
      Unknown,    // no operation was running: a timer of the plug-in, or a signal from outside
      Plugin,     // it was being loaded
      Connection, // an init was waiting for the server
      Object,     // an operation of `object` was running
   };
   What what = What::Unknown;
   size_t object = 0;
   bool operator==( const DeathCause & ) const = default;
};

// Finds the cause of a child's death, and decides when the next child may start. A cause that is
// known has its own waiting time elsewhere, and the next child starts at once. Where the cause is
// unknown, the next child itself waits.
class ChildDeaths {
 public:
   // `command` is what the child carried out when it died.
   DeathCause died( const CurrentCommand &command, Time now );
   // The system refused to start the next child.
   void notStarted( Time now ) { backOff_.failed( now ); }
   // A command came to its end, so that children are in order again.
   void commandEnded() { backOff_.succeeded(); }

   bool mayStart( Time now ) const { return backOff_.mayTry( now ); }
   Time nextStart() const { return backOff_.nextTry(); }

 private:
   BackOff backOff_{};
};

} // namespace Host
