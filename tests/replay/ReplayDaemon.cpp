#include "ReplayDaemon.h"

#include "pl.h"

#include <fmt/format.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <map>
#include <memory>
#include <optional>
#include <regex>
#include <vector>

struct pl_timer {
   void ( *callback )( void * );
   void *context;
   std::optional<uint64_t> due{}; // ms
};

namespace {

uint64_t now = 1'000'000'000; // ms
std::vector<std::unique_ptr<pl_timer>> timers;
std::map<std::string, std::string> names, others;

std::string textOf( const void *pointer ) {
   char text[32];
   snprintf( text, sizeof text, "%p", pointer );
   return text;
}

pl_timer *nextDue( uint64_t end ) {
   pl_timer *next = nullptr;
   for ( const auto &timer : timers )
      if ( timer->due && *timer->due <= end && ( !next || *timer->due < *next->due ) )
         next = timer.get();
   return next;
}

} // namespace

namespace ReplayDaemon {

void nameIs( const void *pointer, const std::string &name ) { names[textOf( pointer )] = name; }

void forgetOtherPointers() { others.clear(); }

std::string named( const std::string &text ) {
   static const std::regex pointer( "0x[0-9a-f]{6,}" );
   std::string result;
   auto rest = text.begin();
   for ( std::sregex_iterator match( text.begin(), text.end(), pointer ), end; match != end;
         ++match ) {
      result.append( rest, match->prefix().second );
      const auto known = names.find( match->str() );
      const auto number = fmt::format( "<{}>", others.size() + 1 );
      result += known != names.end() ? known->second
                                     : others.try_emplace( match->str(), number ).first->second;
      rest = match->suffix().first;
   }
   return result.append( rest, text.end() );
}

void advance( unsigned milliseconds, const std::function<void( unsigned )> &passes ) {
   const uint64_t end = now + milliseconds;
   const auto turnTo = [&]( uint64_t time ) {
      passes( static_cast<unsigned>( time - now ) );
      now = time;
   };
   while ( pl_timer *timer = nextDue( end ) ) {
      turnTo( *timer->due );
      timer->due.reset();
      timer->callback( timer->context );
   }
   turnTo( end );
}

} // namespace ReplayDaemon

void pl_trace( int level, const char *format, ... ) {
   char text[65536];
   va_list arguments;
   va_start( arguments, format );
   vsnprintf( text, sizeof text, format, arguments );
   va_end( arguments );
   fmt::print( "   {} {}\n", level, ReplayDaemon::named( text ) );
}

pl_timer_handle pl_timer_add( void ( *callback )( void * ), void *context ) {
   return timers.emplace_back( std::make_unique<pl_timer>( pl_timer{ callback, context } ) ).get();
}

int pl_timer_set( pl_timer_handle timer, unsigned int milliseconds ) {
   timer->due = now + milliseconds;
   return 0;
}

int pl_timer_cancel( pl_timer_handle timer ) {
   timer->due.reset();
   return 0;
}

void pl_timer_delete( pl_timer_handle timer ) {
   std::erase_if( timers, [&]( const auto &each ) { return each.get() == timer; } );
}

void pl_fd_watcher_delete( pl_fd_watcher_handle ) {}

extern "C" time_t time( time_t *out ) noexcept {
   const auto seconds = static_cast<time_t>( now / 1000 );
   if ( out )
      *out = seconds;
   return seconds;
}
