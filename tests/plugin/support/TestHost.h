// A host daemon for tests: it keeps the traces of the plug-in, and a test makes its timers expire.
#pragma once

#include "pl.h"

#include <memory>
#include <string>
#include <vector>

struct pl_timer {
   void ( *callback )( void * ) = nullptr;
   void *context = nullptr;
   bool armed = false;
   unsigned milliseconds = 0;
   int timesSet = 0;
   int timesCancelled = 0;
   bool deleted = false;

   // The time is over: disarms the timer and calls back, as a host does.
   void expire();
};

namespace TestHost {

struct Trace {
   int level;
   std::string text;
   bool operator==( const Trace & ) const = default;
};

extern std::vector<Trace> traces;
extern bool keepsTraces;
extern std::vector<std::unique_ptr<pl_timer>> timers;
extern bool makesTimers;
extern bool armsTimers, cancelsTimers;
extern long now;         // the result of time(), in seconds
extern bool copiesTexts; // false: strdup() fails
extern std::vector<pl_fd_watcher_handle> deletedWatchers;

void reset();

// The texts of this trace level, in order.
std::vector<std::string> tracedAt( int level );
bool traced( int level, const std::string &text );

} // namespace TestHost
