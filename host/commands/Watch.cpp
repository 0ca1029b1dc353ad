#include "host/commands/CommandSession.h"
#include "host/commands/Commands.h"
#include "host/terminal/Table.h"
#include "host/terminal/Terminal.h"

#include <cstdio>
#include <fmt/format.h>
#include <optional>
#include <spdlog/spdlog.h>
#include <unistd.h>

namespace Host {

int watch( const BoardFiles::Board &whole, const Options &options ) {
   // Who only looks must not clear the flags of the modules.
   const BoardFiles::Board board = BoardFiles::withoutModules( whole );
   CommandSession session( board, options, CommandSession::Source::ServeIfThere );
   std::optional<Terminal> terminal;
   if ( Terminal::isAvailable() )
      terminal.emplace( session.loop(), [&session]( char key ) {
         if ( key == 'q' )
            session.stop();
      } );
   // Log lines on the same screen would overwrite the table.
   const auto logLevel = spdlog::get_level();
   if ( terminal && ::isatty( STDERR_FILENO ) )
      spdlog::set_level( spdlog::level::off );
   // A table after every round. If a round takes long, also one each period.
   session.onUpdate(
      [&] {
         const auto lines = tableOf( session.report() );
         if ( terminal )
            terminal->draw( lines );
         else
            fmt::print( "{}\n\n", fmt::join( lines, "\n" ) );
         std::fflush( stdout );
      },
      true );
   return session.run( [&] {
      terminal.reset();
      spdlog::set_level( logLevel );
   } );
}

} // namespace Host
