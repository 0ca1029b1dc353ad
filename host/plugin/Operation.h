#pragma once

#include "host/State.h"
#include "host/plugin/ObjectCalls.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fmt/format.h>
#include <pl.h>
#include <string_view>

// How operations of an object's table are called, and what is made of how they end.
namespace Host {

// Whether a table, as long as its size word says, provides an operation.
template <class Ops, class Operation>
bool provides( const Ops &ops, Operation Ops::*operation ) {
   const auto end = reinterpret_cast<const char *>( &( ops.*operation ) + 1 ) -
                    reinterpret_cast<const char *>( &ops );
   return static_cast<size_t>( end ) <= ops.size && ops.*operation;
}

// A float's shortest decimal text says what was meant: 24.1, where a plain cast gives 24.10000038.
inline Scalar scalar( float value ) { return std::stod( fmt::format( "{}", value ) ); }
inline Scalar scalar( int value ) { return int64_t{ value }; }
inline Scalar scalar( unsigned value ) { return int64_t{ value }; }

// Makes of a status what it means for a reading; all is as it was when the status is good.
inline void applyStatus( Reading &reading, int status ) {
   if ( status == PL_STATUS_OK )
      return;
   reading.state = status == PL_STATUS_NOT_PROVIDED ? State::Unsupported : State::Unreadable;
   reading.fault.status = status;
   reading.value = {};
}

// Announces a reading, lets `operation` fill it in, and hands it on. An exception that the
// operation throws is the reading's fault.
template <class Operation>
void runOperation( const ReadingSink &sink, const char *name, const char *unit,
                   const Operation &operation ) {
   sink.begun( name );
   Reading reading{ .name = name, .unit = unit };
   try {
      operation( reading );
   } catch ( const std::exception &exception ) {
      // By this text a driver says that it has no such operation.
      const bool missing = std::string_view( exception.what() ).starts_with( "Not implemented" );
      reading.state = missing ? State::Unsupported : State::Unreadable;
      reading.fault.words = exception.what();
      reading.value = {};
   }
   sink.done( reading );
}

// The texts that tell why the switch was last started.
inline void readReloadCause( pl_system *system, Reading &reading ) {
   char cause[100] = "", description[500] = "";
   long time = 0;
   const int status = system->ops->get_reload_cause( system, &cause, &time, &description );
   reading.value = std::string( cause, ::strnlen( cause, sizeof cause ) );
   applyStatus( reading, status );
}

} // namespace Host
