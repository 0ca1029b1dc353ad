#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <systemd/sd-daemon.h>

#include <chrono>
#include <cstdint>
#include <functional>

namespace Sockets {

// Tells the system's manager that the program is ready, and from then on that its loop still turns;
// a program that has no manager tells nobody. A beat means that the loop runs, not that a bus
// answers: a slow bus is no reason to start the program anew.
class Heartbeat {
 public:
   // The sockets listen. `work` is called with each beat.
   explicit Heartbeat( boost::asio::io_context &loop, std::function<void()> work = {} )
      : timer_( loop ), work_( std::move( work ) ) {
      uint64_t limit = 0; // microseconds, after which the manager ends a program that is silent
      if ( sd_watchdog_enabled( 0, &limit ) > 0 )
         interval_ = std::chrono::microseconds( limit / 3 );
      sd_notify( 0, "READY=1" );
      beat();
   }
   // So that the loop has no more work.
   void stop() { timer_.cancel(); }

 private:
   void beat() {
      sd_notify( 0, "WATCHDOG=1" );
      if ( work_ )
         work_();
      timer_.expires_after( interval_ );
      timer_.async_wait( [this]( const boost::system::error_code &stopped ) {
         if ( !stopped )
            beat();
      } );
   }

   boost::asio::steady_timer timer_;
   const std::function<void()> work_;
   std::chrono::microseconds interval_ = std::chrono::seconds( 5 );
};

} // namespace Sockets
