#pragma once

#include "host/plugin/ChildProcess.h"
#include "host/session/Supervisor.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <functional>
#include <memory>
#include <string>

namespace Host {

// Runs a board on an event loop: starts and ends the child process for the supervisor, and gives it
// the child's events and the time.
class Session {
 public:
   struct Handlers {
      std::function<void()> changed{};              // a command ended, or a child died
      std::function<void( const Trace & )> trace{}; // those up to traceLevel are sure to come
      std::function<void( const std::string & )>
         notice{}; // for the log: events of the child process
      int traceLevel = 7;
   };

   // `board` must outlive the session. Work starts when the loop runs. If the first child can't be
   // started, the loop throws std::runtime_error. Later ones are tried again.
   Session( boost::asio::io_context &loop, const BoardFiles::Board &board, std::string plugin,
            Limits limits, Handlers handlers );

   const Supervisor &supervisor() const { return supervisor_; }

   // The running operation as pl.h names it; empty when none runs.
   std::string operation();

   // Has an object do something. `answer` is called once: now, or when the loop runs.
   void ask( size_t object, const Action &action, Supervisor::Answer answer );

 private:
   void pump();
   void startChild();
   void noteOperation();
   void heard( const Event &event );
   void died( const std::string &cause );

   boost::asio::io_context &loop_;
   const BoardFiles::Board &board_;
   std::string plugin_;
   Handlers handlers_;
   Supervisor supervisor_;
   boost::asio::steady_timer timer_;
   std::unique_ptr<ChildProcess> child_{};
   bool hadChild_ = false;
   std::string whyKilled_{};
};

} // namespace Host
