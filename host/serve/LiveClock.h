#pragma once

#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <functional>

namespace Host {

// Calls back again and again while there is a reason.
class LiveClock {
 public:
   // `tick` returns whether it wants to be called again. The clock must outlive the loop's run.
   LiveClock( boost::asio::io_context &loop, std::chrono::milliseconds period,
              std::function<bool()> tick )
      : timer_( loop ), period_( period ), tick_( std::move( tick ) ) {}

   // Goes on where it goes already.
   void start() {
      if ( !std::exchange( goes_, true ) )
         wait();
   }

 private:
   void wait() {
      timer_.expires_after( period_ );
      timer_.async_wait( [this]( const boost::system::error_code &failure ) {
         if ( failure )
            return;
         goes_ = tick_();
         if ( goes_ )
            wait();
      } );
   }

   boost::asio::steady_timer timer_;
   const std::chrono::milliseconds period_;
   const std::function<bool()> tick_;
   bool goes_ = false;
};

} // namespace Host
