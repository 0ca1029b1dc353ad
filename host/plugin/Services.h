#pragma once

#include <boost/asio/io_context.hpp>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

struct pl_timer;

namespace Host {

// The services that pl.h gives to a plug-in. The functions pl_trace and pl_timer_* of this process
// use the one object of this class. Without it they print nothing and make no timers.
class Services {
 public:
   using TraceSink = std::function<void( int level, std::string text )>;

   Services( boost::asio::io_context &loop, TraceSink sink );
   ~Services();
   Services( const Services & ) = delete;
   Services &operator=( const Services & ) = delete;

   static Services *current();

   void trace( int level, std::string text ) const { sink_( level, std::move( text ) ); }

   // The object that owns all timers made from now on.
   void setTimerOwner( size_t object ) { timerOwner_ = object; }
   // The owner of the timer whose callback runs now. Nothing outside of callbacks.
   std::optional<size_t> runningTimerOwner() const { return runningTimerOwner_; }

   pl_timer *addTimer( void ( *callback )( void * ), void *context );
   // False when there is no such timer.
   bool setTimer( pl_timer *timer, unsigned milliseconds );
   bool cancelTimer( pl_timer *timer );
   void deleteTimer( pl_timer *timer );
   // Has all timers that are set expire now, for who turns the clock by hand.
   void expireTimers();

 private:
   void run( pl_timer &timer );

   boost::asio::io_context &loop_;
   TraceSink sink_;
   std::map<pl_timer *, std::shared_ptr<pl_timer>> timers_{};
   size_t timerOwner_ = 0;
   std::optional<size_t> runningTimerOwner_{};
};

} // namespace Host
