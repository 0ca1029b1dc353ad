#ifndef ORBIS_HOST_VIEW_STAY_H
#define ORBIS_HOST_VIEW_STAY_H

#include "session/Session.h"
#include "view/CommandLine.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <functional>

namespace Host {

/// What the commands have in common that stay with a board: a session on a loop, something to do
/// again and again, and an end by SIGINT, SIGTERM or SIGHUP.
class Stay {
 public:
   Stay( const Board &board, const Options &options );

   /// Calls `tell` once a period; with `byRound` whenever every object was read, and where that
   /// takes too long, one and a half periods after the last call.
   void tellWith( std::function<void()> tell, bool byRound );

   /// Runs to the end, then calls `leave`; the program's exit code.
   int run( const std::function<void()> &leave = [] {} );
   void stop() { loop_.stop(); }

   boost::asio::io_context &loop() { return loop_; }
   BoardReport report() const { return session_.supervisor().report( Clock::now() ); }

 private:
   void changed();
   void tell();
   void tellLater();

   const Clock::duration period_;
   boost::asio::io_context loop_{ 1 };
   boost::asio::signal_set signals_;
   boost::asio::steady_timer timer_{ loop_ };
   std::function<void()> tell_{};
   bool byRound_ = false;
   Session session_;
};

} // namespace Host

#endif
