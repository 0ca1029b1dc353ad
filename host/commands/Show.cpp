#include "host/JsonWriter.h"
#include "host/commands/Commands.h"
#include "host/commands/ReadOnce.h"
#include "host/serve/Client.h"
#include "host/terminal/Table.h"
#include "screen/Terminal.h"

#include <algorithm>
#include <fmt/format.h>
#include <spdlog/spdlog.h>

namespace Host {
namespace {

bool isCritical( const BoardReport &report ) {
   return std::any_of( report.begin(), report.end(), []( const ObjectReport &object ) {
      return object.health && object.health->level == Health::Level::Critical;
   } );
}

int print( const BoardFiles::Board &board, const Options &options, const BoardReport &report ) {
   if ( options.json )
      fmt::print( "{}\n", Host::toJson( board.folder, report ) );
   else
      fmt::print( "{}\n",
                  fmt::join( tableOf( report, Screen::Terminal::width().value_or( 0 ) ), "\n" ) );
   return hasUnreadable( report ) || isCritical( report ) ? exitUnreadable : exitOk;
}

} // namespace

int show( const BoardFiles::Board &board, const Options &options ) {
   if ( const auto client = Client::ofBoard( board.folder ) )
      if ( const auto report = client->report() ) {
         spdlog::debug( "asks the serve at {}", client->socket().string() );
         return print( board, options, *report );
      }
   const BoardOnce once = readOnce( board, options );
   if ( once.loadFault )
      return reportLoadFault( *once.loadFault );
   const int exitCode = print( board, options, once.report );
   if ( once.gaveUp )
      spdlog::error( "gave up after {} s", totalLimit.count() );
   return once.gaveUp ? exitUnreadable : exitCode;
}

} // namespace Host
