// The services of the host daemon. They are weak symbols: the plug-in also loads and initialises in
// a host without them.
#pragma once

#include "OrbisGeneric/Assert.h"
#include "pl.h"

#pragma weak pl_trace
#pragma weak pl_timer_add
#pragma weak pl_timer_set
#pragma weak pl_timer_cancel
#pragma weak pl_timer_delete
#pragma weak pl_fd_watcher_delete

// A macro, so that the compiler checks the format against the arguments.
#define PL_TRACE( level, ... ) ( pl_trace ? pl_trace( level, __VA_ARGS__ ) : ( void )0 )

// Makes a function visible to the host. All other symbols of the plug-in are hidden.
#define ORBIS_EXPORT __attribute__( ( visibility( "default" ) ) )

namespace HostServices {

// A host without timer functions looks like a host that can't make timers: timerAdd returns null.
// Without a timer, timerSet and timerCancel return a failure and timerDelete does nothing.
inline pl_timer_handle timerAdd( void ( *callback )( void * ), void *context ) {
   return pl_timer_add ? pl_timer_add( callback, context ) : nullptr;
}

inline int timerSet( pl_timer_handle timer, unsigned milliseconds ) {
   return timer && pl_timer_set ? pl_timer_set( timer, milliseconds ) : -1;
}

inline int timerCancel( pl_timer_handle timer ) {
   return timer && pl_timer_cancel ? pl_timer_cancel( timer ) : -1;
}

inline void timerDelete( pl_timer_handle timer ) {
   if ( timer && pl_timer_delete )
      pl_timer_delete( timer );
}

} // namespace HostServices
