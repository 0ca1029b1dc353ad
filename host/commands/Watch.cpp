#include "host/commands/CommandSession.h"
#include "host/commands/Commands.h"
#include "host/commands/WatchScreen.h"
#include "host/terminal/Table.h"

#include <cstdio>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <optional>
#include <spdlog/spdlog.h>
#include <unistd.h>

namespace Host {
namespace {

// A table after every round. If a round takes long, also one each period.
int watchPlainly( CommandSession &session ) {
   session.onUpdate(
      [&session] {
         const size_t columns = Screen::Terminal::width().value_or( 0 );
         fmt::print( "{}\n\n", fmt::join( tableOf( session.report(), columns ), "\n" ) );
         std::fflush( stdout );
      },
      true );
   return session.run();
}

} // namespace

int watch( const BoardFiles::Board &whole, const Options &options ) {
   // Who only looks must not clear the flags of the modules.
   const BoardFiles::Board board = BoardFiles::withoutModules( whole );
   CommandSession session( board, options, CommandSession::Source::ServeIfThere );
   if ( options.plain || !Screen::Terminal::canDraw() )
      return watchPlainly( session );
   std::optional<WatchScreen> screen( std::in_place, board, options, session );
   // Log lines on the same screen would overwrite it.
   const auto logLevel = spdlog::get_level();
   if ( ::isatty( STDERR_FILENO ) )
      spdlog::set_level( spdlog::level::off );
   session.onUpdate( [&screen] { screen->refresh(); }, true );
   screen->refresh();
   return session.run( [&] {
      screen.reset();
      spdlog::set_level( logLevel );
   } );
}

} // namespace Host
