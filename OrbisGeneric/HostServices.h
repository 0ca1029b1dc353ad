// The host daemon's services, bound weakly: the plug-in loads and initialises in a host that lacks
// any of them.
#pragma once

#include "pl.h"

#pragma weak pl_trace
#pragma weak pl_timer_add
#pragma weak pl_timer_set
#pragma weak pl_timer_cancel
#pragma weak pl_timer_delete
#pragma weak pl_fd_watcher_delete

// A macro, so that the compiler checks the format against the arguments.
#define PL_TRACE( level, ... ) ( pl_trace ? pl_trace( level, __VA_ARGS__ ) : ( void )0 )

// Visible to the host; everything else of the plug-in is hidden.
#define ORBIS_EXPORT __attribute__( ( visibility( "default" ) ) )

namespace HostServices {

// A host without timer functions is one that could make no timer: null here, failure below.
inline pl_timer_handle timerAdd( void ( *callback )( void * ), void *context ) {
   return pl_timer_add ? pl_timer_add( callback, context ) : nullptr;
}

inline int timerSet( pl_timer_handle timer, unsigned milliseconds ) {
   return pl_timer_set ? pl_timer_set( timer, milliseconds ) : -1;
}

inline int timerCancel( pl_timer_handle timer ) {
   return pl_timer_cancel ? pl_timer_cancel( timer ) : -1;
}

inline void timerDelete( pl_timer_handle timer ) {
   if ( pl_timer_delete )
      pl_timer_delete( timer );
}

} // namespace HostServices
