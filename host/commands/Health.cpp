#include "host/JsonWriter.h"
#include "host/Times.h"
#include "host/commands/Commands.h"
#include "host/commands/ReadOnce.h"
#include "host/serve/Client.h"
#include "host/terminal/HealthText.h"

#include <fmt/ranges.h>
#include <spdlog/spdlog.h>
#include <unistd.h>

namespace Host {
namespace {

// The exit codes of monitoring plugins.
int exitCodeOf( Health::Level level ) {
   switch ( level ) {
   case Health::Level::Ok:
      return 0;
   case Health::Level::Warning:
      return 1;
   case Health::Level::Critical:
      return 2;
   default:
      return exitUnknown;
   }
}

int print( const BoardFiles::Board &board, const Options &options, const HealthReport &health,
           const BoardReport &report ) {
   if ( options.json ) {
      fmt::print( "{}\n", Host::toJson( board.folder, health ) );
      return exitCodeOf( health.level );
   }
   std::string first = summaryOf( health );
   if ( options.perfdata )
      first += " | " + performanceDataOf( report );
   fmt::print( "{}\n", first );
   if ( !options.brief )
      for ( const std::string &line : linesOf( health, ::isatty( STDOUT_FILENO ) ? 80 : 0 ) )
         fmt::print( "{}\n", line );
   return exitCodeOf( health.level );
}

} // namespace

int health( const BoardFiles::Board &board, const Options &options ) {
   if ( const auto client = Client::ofBoard( board.folder ) ) {
      const auto known = client->health();
      const auto report = known ? client->report() : std::nullopt;
      if ( report )
         return print( board, options, *known, *report );
   }
   const BoardOnce once = readOnce( board, options );
   if ( once.loadFault ) {
      reportLoadFault( *once.loadFault );
      return exitUnknown;
   }
   if ( once.gaveUp )
      spdlog::error( "gave up after {} s", totalLimit.count() );
   return print( board, options, once.health, once.report );
}

} // namespace Host
