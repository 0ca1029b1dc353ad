#include "support/TestHost.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <ctime>

namespace TestHost {

std::vector<Trace> traces;
bool keepsTraces = true;
std::vector<std::unique_ptr<pl_timer>> timers;
bool makesTimers = true;
bool armsTimers = true, cancelsTimers = true;
long now;
bool copiesTexts = true;
std::vector<pl_fd_watcher_handle> deletedWatchers;

void reset() {
   traces.clear();
   keepsTraces = true;
   timers.clear();
   makesTimers = armsTimers = cancelsTimers = true;
   now = 1'000'000;
   copiesTexts = true;
   deletedWatchers.clear();
}

std::vector<std::string> tracedAt( int level ) {
   std::vector<std::string> texts;
   for ( const auto &trace : traces )
      if ( trace.level == level )
         texts.push_back( trace.text );
   return texts;
}

bool traced( int level, const std::string &text ) {
   return std::find( traces.begin(), traces.end(), Trace{ level, text } ) != traces.end();
}

} // namespace TestHost

void pl_timer::expire() {
   armed = false;
   callback( context );
}

void pl_trace( int level, const char *format, ... ) {
   if ( !TestHost::keepsTraces )
      return;
   char text[65536];
   va_list arguments;
   va_start( arguments, format );
   vsnprintf( text, sizeof( text ), format, arguments );
   va_end( arguments );
   TestHost::traces.push_back( { level, text } );
   fprintf( stderr, "%d %s\n", level, text ); // death tests look for traces in stderr
}

pl_timer_handle pl_timer_add( void ( *callback )( void * ), void *context ) {
   if ( !TestHost::makesTimers )
      return nullptr;
   auto &timer = TestHost::timers.emplace_back( std::make_unique<pl_timer>() );
   timer->callback = callback;
   timer->context = context;
   return timer.get();
}

int pl_timer_set( pl_timer_handle timer, unsigned int milliseconds ) {
   ++timer->timesSet;
   if ( !TestHost::armsTimers )
      return -1;
   timer->armed = true;
   timer->milliseconds = milliseconds;
   return 0;
}

int pl_timer_cancel( pl_timer_handle timer ) {
   ++timer->timesCancelled;
   if ( !TestHost::cancelsTimers )
      return -1;
   timer->armed = false;
   return 0;
}

void pl_timer_delete( pl_timer_handle timer ) { timer->deleted = true; }

void pl_fd_watcher_delete( pl_fd_watcher_handle watcher ) {
   TestHost::deletedWatchers.push_back( watcher );
}

// --wrap of the linker sends the plug-in's calls of these functions here.
extern "C" {
time_t __wrap_time( time_t * ) { return TestHost::now; }
char *__real_strdup( const char * );
char *__wrap_strdup( const char *text ) {
   return TestHost::copiesTexts ? __real_strdup( text ) : nullptr;
}
}
