#pragma once

#include "host/commands/CommandLine.h"
#include "host/serve/Client.h"
#include "host/session/CageModules.h"
#include "host/session/Session.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <functional>
#include <optional>

namespace Host {

// The common part of watch and serve: a session of its own, or the client of a running serve; an
// update in every period; and an end at SIGINT, SIGTERM or SIGHUP.
class CommandSession {
 public:
   enum class Source { Own, ServeIfThere };
   CommandSession( const BoardFiles::Board &board, const Options &options, Source source );

   // Calls `update` once in every period. With `byRound` it is called when every object was read,
   // and when the plug-in's process has ended or is back, but not later than one and a half periods
   // after the last call.
   void onUpdate( std::function<void()> update, bool byRound );

   // Runs until stop() or a signal, then calls `leave`. Returns the exit code.
   int run( const std::function<void()> &leave = [] {} );
   void stop() { loop_.stop(); }

   boost::asio::io_context &loop() { return loop_; }
   // Whether every object was read once, or failed. Only with Source::Own.
   bool hadRound() const { return hadRound_; }
   // As Supervisor's. Only with Source::Own.
   std::string plugInFault() const { return session_->supervisor().plugInFault(); }
   const Supervisor &supervisor() const { return session_->supervisor(); }
   const std::vector<Health::Pmbus::Limit> &limits( size_t object ) const {
      return session_->supervisor().limits( object );
   }
   // What is known of the modules. Only with Source::Own.
   std::vector<CageModule> modules() const {
      const Time now = Clock::now();
      return modulesOf( board_, session_->supervisor(), session_->supervisor().report( now ), now );
   }
   // Null where nothing was read of it. Only with Source::Own.
   const ModuleRecord *module( size_t object ) const {
      return session_->supervisor().module( object );
   }
   // The board as it is known now. If the serve has ended, this brings the board up itself.
   BoardReport report();
   // The serve that is asked; null with a session of its own, also once leaveServe() was called.
   const Client *serve() const { return serve_ ? &*serve_ : nullptr; }
   // The serve is gone: brings the board up itself.
   void leaveServe();
   // A serve runs again: asks that from now on. Whether there is one.
   bool returnToServe();
   // Has an object do something. Only with Source::Own.
   void ask( size_t object, const Action &action, Supervisor::Answer answer ) {
      session_->ask( object, action, std::move( answer ) );
   }

 private:
   void bringUp();
   void changed();
   void update();
   void updateLater();

   const Clock::duration period_;
   boost::asio::io_context loop_{ 1 };
   boost::asio::signal_set signals_;
   boost::asio::steady_timer timer_{ loop_ };
   std::function<void()> update_{};
   bool byRound_ = false;
   bool hadRound_ = false;
   // of the last update:
   size_t updatedRound_ = 0;
   std::string updatedFault_{};
   const BoardFiles::Board &board_;
   const Options &options_;
   std::optional<Client> serve_{};
   std::optional<Session> session_{};
};

} // namespace Host
