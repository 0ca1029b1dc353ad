#include "host/commands/Commands.h"
#include "host/serve/Client.h"
#include "host/session/Session.h"
#include "host/terminal/Table.h"

#include <algorithm>
#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <csignal>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <iostream>
#include <optional>
#include <pl.h>
#include <spdlog/spdlog.h>
#include <unistd.h>

namespace Host {
namespace {

std::optional<size_t> find( const BoardFiles::Board &board, const Options &options ) {
   for ( size_t i = 0; i < board.objects.size(); ++i ) {
      const BoardFiles::ObjectDescription &object = board.objects[i];
      if ( object.kind == options.kind &&
           ( object.name == options.object || options.kind == BoardFiles::Kind::System ) )
         return i;
   }
   return {};
}

bool cutsPower( const Action &action ) {
   return action.operation == "powercycle" || action.operation == "poweroff";
}

// Asks the user at the terminal.
bool userAgrees( const Action &action, const BoardFiles::Board &board ) {
   if ( !::isatty( STDIN_FILENO ) ) {
      fmt::print( stderr, "{} needs --yes when standard input is not a terminal\n",
                  action.operation );
      return false;
   }
   fmt::print( stderr, "{} of {}? [y/N] ", action.operation, board.folder );
   std::string answer;
   return std::getline( std::cin, answer ) && ( answer == "y" || answer == "yes" );
}

// Where the action read nothing, the user sees what is done.
int print( const Options &options, const std::string &name, const Reading &result ) {
   if ( result.state == State::Ok ) {
      if ( std::holds_alternative<std::monostate>( result.value ) )
         fmt::print( stderr, "done: {} {} {}\n", nameOf( options.kind ), name,
                     fmt::join( options.words, " " ) );
      else
         fmt::print( "{}\n", toText( result.value ) );
      return exitOk;
   }
   const std::string fault = toText( result.fault );
   fmt::print( stderr, "{}: {}{}{}\n", name,
               result.state == State::Unsupported ? "the driver doesn't support this" : "failed",
               fault.empty() ? "" : ": ", fault );
   return exitUnreadable;
}

// Brings up one object for one action. While an LED blinks, the program must stay: the plug-in
// blinks it with a timer.
class ActionSession {
 public:
   ActionSession( const BoardFiles::Board &board, const Options &options, size_t object )
      : board_( board ), options_( options ), object_( object ),
        signals_( loop_, SIGINT, SIGTERM, SIGHUP ),
        session_( loop_, board, options.plugin,
                  Limits{ .init = initLimit, .step = fromSeconds( options.limit ), .only = object },
                  logging( options, [this] { changed(); } ) ) {}

   int run( const Action &action ) {
      signals_.async_wait( [this]( const auto &, int ) { loop_.stop(); } );
      giveUp_.expires_after( totalLimit );
      giveUp_.async_wait( [this]( const auto &failure ) {
         if ( !failure )
            ended(
               { .state = State::Unreadable,
                 .fault = { .words = fmt::format( "gave up after {} s", totalLimit.count() ) } },
               false );
      } );
      const bool stays =
         action == Action{ .operation = "set_light_setting", .arguments = { PL_LED_BEACON } };
      session_.ask( object_, action,
                    [this, stays]( const Reading &result ) { ended( result, stays ); } );
      loop_.run();
      const auto &fault = session_.supervisor().loadFault();
      return fault ? reportLoadFault( *fault ) : exitCode_;
   }

 private:
   void changed() {
      if ( session_.supervisor().loadFault() )
         loop_.stop();
   }
   void ended( const Reading &result, bool stays ) {
      giveUp_.cancel();
      exitCode_ = print( options_, board_.objects[object_].name, result );
      if ( stays && exitCode_ == exitOk )
         fmt::print( stderr, "{} blinks until Ctrl-C\n", board_.objects[object_].name );
      else
         loop_.stop();
   }

   const BoardFiles::Board &board_;
   const Options &options_;
   const size_t object_;
   int exitCode_ = exitUnreadable;
   boost::asio::io_context loop_{ 1 };
   boost::asio::signal_set signals_;
   boost::asio::steady_timer giveUp_{ loop_ };
   Session session_;
};

} // namespace

int act( const BoardFiles::Board &board, const Options &options ) {
   const auto parsed = parseAction( options.kind, options.words );
   const auto object = find( board, options );
   if ( const auto *wrong = std::get_if<std::string>( &parsed ) ) {
      fmt::print( stderr, "{}\n", *wrong );
      return exitUsage;
   }
   if ( !object ) {
      fmt::print( stderr, "the board has no {} \"{}\"\n", nameOf( options.kind ), options.object );
      return exitUsage;
   }
   const Action &action = std::get<Action>( parsed );
   if ( cutsPower( action ) && !options.yes && !userAgrees( action, board ) )
      return exitUsage;
   if ( const auto client = Client::ofBoard( board.folder ) ) {
      spdlog::debug( "asks the serve at {}", client->socket().string() );
      const std::string &name = board.objects[*object].name;
      return print( options, name, client->act( name, options.words ) );
   }
   spdlog::debug( "no serve runs for {}: this command brings the board up", board.folder );
   return ActionSession( board, options, *object ).run( action );
}

} // namespace Host
