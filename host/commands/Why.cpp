#include "host/serve/Why.h"

#include "boardfiles/Nearest.h"
#include "host/commands/Commands.h"
#include "host/commands/ReadOnce.h"
#include "host/commands/ReadRegisters.h"
#include "host/journal/Journal.h"
#include "host/serve/ServerAccounts.h"
#include "host/serve/WhyJson.h"
#include "host/session/ServerProbe.h"
#include "host/terminal/WhyText.h"
#include "screen/Terminal.h"

#include <algorithm>
#include <fmt/ranges.h>
#include <spdlog/spdlog.h>

namespace Host {
namespace {

std::optional<size_t> find( const BoardFiles::Board &board, const std::string &name ) {
   std::vector<std::string> names;
   for ( size_t i = 0; i < board.objects.size(); ++i ) {
      if ( board.objects[i].name == name )
         return i;
      names.push_back( board.objects[i].name );
   }
   fmt::print( stderr, "the board {} has no object \"{}\"{}\n", board.folder, name,
               BoardFiles::didYouMean( name, names ) );
   return {};
}

// What the last serve has left.
std::vector<Health::Event> eventsInFile( const std::string &object ) {
   try {
      const Journal journal = Journal::toRead( serveEvents() );
      auto events =
         journal.events( { .object = object, .limit = mostEventsOfWhy, .newestFirst = true } );
      std::reverse( events.begin(), events.end() );
      return events;
   } catch ( const Sqlite::Error &error ) {
      spdlog::debug( "there is no journal to read: {}", error.what() );
      return {};
   }
}

// What one round can tell, and what the plug-in's server remembers of it.
Why readWhyOnce( const BoardFiles::Board &board, size_t object, const BoardOnce &once ) {
   Why why = whyOf( board, object, once.report, once.health );
   why.events = eventsInFile( why.object.name );
   boost::asio::io_context loop( 1 );
   const ServerAccounts accounts( loop, serverSocket( board.server ) );
   Why whole;
   accounts.addTransfers( std::move( why ), [&whole]( const Why &known ) { whole = known; } );
   loop.run();
   return whole;
}

int print( const Options &options, const Why &why ) {
   if ( options.json )
      fmt::print( "{}\n", Host::toJson( why ) );
   else
      fmt::print( "{}\n",
                  fmt::join( linesOf( why, Screen::Terminal::width().value_or( 0 ) ), "\n" ) );
   const bool isCritical = why.object.health && why.object.health->level == Health::Level::Critical;
   return hasUnreadable( { why.object } ) || isCritical ? exitUnreadable : exitOk;
}

} // namespace

int why( const BoardFiles::Board &board, const Options &options ) {
   const auto object = find( board, options.object );
   if ( !object )
      return exitUsage;
   const auto serve = Client::ofBoard( board.folder );
   auto known = serve ? serve->why( options.object ) : std::nullopt;
   if ( known ) {
      spdlog::debug( "asks the serve at {}", serve->socket().string() );
   } else {
      const BoardFiles::Board read = BoardFiles::withoutModules( board, options.object );
      if ( board.objects[*object].kind == BoardFiles::Kind::Module )
         warnOfFlags();
      const BoardOnce once = readOnce( board, options, options.object );
      if ( once.loadFault )
         return reportLoadFault( *once.loadFault );
      if ( once.gaveUp )
         spdlog::error( "gave up after {} s", totalLimit.count() );
      known = readWhyOnce( read, find( read, options.object ).value(), once );
   }
   known->registers = registersOf( board, *object );
   for ( ChipReadings &chip : known->registers )
      for ( const ChipNeighbour &neighbour : known->neighbours )
         if ( neighbour.place == chip.place && neighbour.answers == false && chip.whyNone.empty() )
            chip = { .place = chip.place, .whyNone = "the chip doesn't answer" };
   readRegisters( board, options, serve, known->registers );
   return print( options, *known );
}

} // namespace Host
