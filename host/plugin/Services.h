#pragma once

#include <boost/asio/io_context.hpp>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

struct pl_timer;

namespace Host {

// What pl.h promises a plug-in: the functions pl_trace and pl_timer_* of this process work on the
// one object of this class that there is. Without it they are silent and make no timer.
class Services {
 public:
   using TraceSink = std::function<void( int level, std::string text )>;

   Services( boost::asio::io_context &loop, TraceSink sink );
   ~Services();
   Services( const Services & ) = delete;
   Services &operator=( const Services & ) = delete;

   static Services *current();

   void trace( int level, std::string text ) const { sink_( level, std::move( text ) ); }

   // The object that timers are made for from now on.
   void setTimerOwner( size_t object ) { timerOwner_ = object; }
   // Whose timer it is that runs now; nothing outside of a timer's callback.
   std::optional<size_t> runningTimerOwner() const { return runningTimerOwner_; }

   pl_timer *addTimer( void ( *callback )( void * ), void *context );
   // False for a timer that there isn't.
   bool setTimer( pl_timer *timer, unsigned milliseconds );
   bool cancelTimer( pl_timer *timer );
   void deleteTimer( pl_timer *timer );

 private:
   boost::asio::io_context &loop_;
   TraceSink sink_;
   std::map<pl_timer *, std::shared_ptr<pl_timer>> timers_{};
   size_t timerOwner_ = 0;
   std::optional<size_t> runningTimerOwner_{};
};

} // namespace Host
