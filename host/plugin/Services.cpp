#include "host/plugin/Services.h"

#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <pl.h>
#include <vector>

struct pl_timer {
   boost::asio::steady_timer timer;
   void ( *callback )( void * );
   void *context;
   size_t owner;
   unsigned armed = 0; // counts sets and cancels, to ignore an expiry from before the last one
   bool isSet = false;
};

namespace Host {
namespace {

Services *theServices = nullptr;

} // namespace

Services::Services( boost::asio::io_context &loop, TraceSink sink )
   : loop_( loop ), sink_( std::move( sink ) ) {
   theServices = this;
}

Services::~Services() { theServices = nullptr; }

Services *Services::current() { return theServices; }

pl_timer *Services::addTimer( void ( *callback )( void * ), void *context ) {
   const auto timer = std::make_shared<pl_timer>(
      pl_timer{ boost::asio::steady_timer( loop_ ), callback, context, timerOwner_ } );
   timers_[timer.get()] = timer;
   return timer.get();
}

bool Services::setTimer( pl_timer *handle, unsigned milliseconds ) {
   const auto found = timers_.find( handle );
   if ( found == timers_.end() )
      return false;
   const unsigned armed = ++handle->armed;
   handle->isSet = true;
   handle->timer.expires_after( std::chrono::milliseconds( milliseconds ) );
   handle->timer.async_wait(
      [this, armed, watch = std::weak_ptr( found->second )]( const auto &failure ) {
         const auto timer = watch.lock();
         if ( timer && !failure && timer->armed == armed )
            run( *timer );
      } );
   return true;
}

void Services::run( pl_timer &timer ) {
   timer.isSet = false;
   runningTimerOwner_ = timer.owner;
   timer.callback( timer.context );
   runningTimerOwner_.reset();
}

void Services::expireTimers() {
   std::vector<std::weak_ptr<pl_timer>> set;
   for ( const auto &[handle, timer] : timers_ )
      if ( timer->isSet )
         set.push_back( timer );
   for ( const auto &each : set )
      if ( const auto timer = each.lock() ) {
         cancelTimer( timer.get() );
         run( *timer );
      }
}

bool Services::cancelTimer( pl_timer *handle ) {
   if ( !timers_.contains( handle ) )
      return false;
   ++handle->armed;
   handle->isSet = false;
   handle->timer.cancel();
   return true;
}

void Services::deleteTimer( pl_timer *handle ) { timers_.erase( handle ); }

} // namespace Host

using Host::Services;

#pragma GCC visibility push( default ) // the plug-in links to these

void pl_trace( int level, const char *format, ... ) {
   Services *services = Services::current();
   if ( !services )
      return;
   std::va_list arguments, again;
   va_start( arguments, format );
   va_copy( again, arguments );
   const int length = std::vsnprintf( nullptr, 0, format, arguments );
   std::string text( length > 0 ? static_cast<size_t>( length ) : 0, '\0' );
   std::vsnprintf( text.data(), text.size() + 1, format, again );
   va_end( again );
   va_end( arguments );
   services->trace( level, std::move( text ) );
}

pl_timer_handle pl_timer_add( void ( *callback )( void * ), void *context ) {
   Services *services = Services::current();
   return services ? services->addTimer( callback, context ) : nullptr;
}

int pl_timer_set( pl_timer_handle timer, unsigned int milliseconds ) {
   Services *services = Services::current();
   return services && services->setTimer( timer, milliseconds ) ? 0 : -1;
}

int pl_timer_cancel( pl_timer_handle timer ) {
   Services *services = Services::current();
   return services && services->cancelTimer( timer ) ? 0 : -1;
}

void pl_timer_delete( pl_timer_handle timer ) {
   if ( Services *services = Services::current() )
      services->deleteTimer( timer );
}

// This host has no watchers, so there is nothing to delete.
void pl_fd_watcher_delete( pl_fd_watcher_handle ) {}

#pragma GCC visibility pop
