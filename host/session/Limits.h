#pragma once

#include "boardfiles/Kind.h"
#include "host/session/BackOff.h"

#include <map>
#include <optional>

namespace Host {

inline Clock::duration fromSeconds( double seconds ) {
   return std::chrono::duration_cast<Clock::duration>( std::chrono::duration<double>( seconds ) );
}

// How long things may take, and how much of a board is used.
struct Limits {
   using Duration = Clock::duration;
   // One pl_<type>_init; the plug-in itself tries for 30 s.
   Duration init = std::chrono::seconds( 40 );
   // Any other command; the plug-in's connection to the server gives up after 10 s.
   Duration step = std::chrono::seconds( 12 );
   // After this time users see that an init waits for the server.
   Duration patience = std::chrono::milliseconds( 500 );
   Duration period = std::chrono::seconds( 1 );    // between two readings of an object
   std::map<BoardFiles::Kind, Duration> periods{}; // of kinds with their own period
   int staleAfter = 3;           // a value that is older than so many periods is stale
   bool once = false;            // read every object once, and don't repeat what failed
   std::optional<size_t> only{}; // bring up only what this object needs, and read nothing

   Duration periodOf( BoardFiles::Kind kind ) const {
      const auto own = periods.find( kind );
      return own == periods.end() ? period : own->second;
   }
};

} // namespace Host
