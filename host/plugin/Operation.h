#pragma once

#include "host/State.h"
#include "host/plugin/ObjectCalls.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fmt/format.h>
#include <pl.h>
#include <string_view>

// Helpers to call the operations of an object's table, and to turn their results into readings.
namespace Host {

static_assert( Health::namedStatuses == PL_STATUS_TRANSACTION + 1 );

// Whether a table has an operation. A table of an older plug-in is shorter, as its `size` says.
template <class Ops, class Operation>
bool provides( const Ops &ops, Operation Ops::*operation ) {
   const auto end = reinterpret_cast<const char *>( &( ops.*operation ) + 1 ) -
                    reinterpret_cast<const char *>( &ops );
   return static_cast<size_t>( end ) <= ops.size && ops.*operation;
}

// Converts by the shortest decimal text of the float: 24.1 stays 24.1. A cast gives 24.10000038.
inline Scalar scalar( float value ) { return std::stod( fmt::format( "{}", value ) ); }
inline Scalar scalar( int value ) { return int64_t{ value }; }
inline Scalar scalar( unsigned value ) { return int64_t{ value }; }

// Puts the status of an operation into its reading. PL_STATUS_OK changes nothing.
inline void applyStatus( Reading &reading, int status ) {
   if ( status == PL_STATUS_OK )
      return;
   reading.state = status == PL_STATUS_NOT_PROVIDED ? State::Unsupported : State::Unreadable;
   reading.fault.status = status;
   reading.value = {};
}

// Calls `operation`, which fills in a reading, and passes the reading to `sink`. An exception of
// the operation becomes the reading's fault.
template <class Operation>
void runOperation( const ReadingSink &sink, const char *name, const char *unit,
                   const Operation &operation ) {
   sink.begun( name );
   Reading reading{ .name = name, .unit = unit };
   try {
      operation( reading );
   } catch ( const std::exception &exception ) {
      // Drivers throw this text for an operation that they don't have.
      const bool missing = std::string_view( exception.what() ).starts_with( "Not implemented" );
      reading.state = missing ? State::Unsupported : State::Unreadable;
      reading.fault.words = exception.what();
      reading.value = {};
   }
   sink.done( reading );
}

// Reads why the switch was last restarted.
inline void readReloadCause( pl_system *system, Reading &reading ) {
   char cause[100] = "", description[500] = "";
   long time = 0;
   const int status = system->ops->get_reload_cause( system, &cause, &time, &description );
   reading.value = std::string( cause, ::strnlen( cause, sizeof cause ) );
   applyStatus( reading, status );
}

} // namespace Host
