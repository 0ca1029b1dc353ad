#include "host/commands/Commands.h"

#include <fmt/format.h>

#include <algorithm>

namespace Host {

int check( const Options &options ) {
   BoardFiles::Findings findings;
   const auto board = BoardFiles::loadBoard( options.board, options.drivers, findings );
   if ( options.json ) {
      fmt::print( "{}\n", BoardFiles::toJson( findings ) );
   } else {
      for ( const BoardFiles::Finding &finding : findings )
         fmt::print( stderr, "{}\n", BoardFiles::toText( finding ) );
   }
   if ( !board || ( options.strict && !findings.empty() ) )
      return exitBadBoard;
   if ( !options.json )
      fmt::print( "{}: {} objects, {}\n", options.board.string(), board->objects.size(),
                  findings.empty() ? "no errors" : "no errors, but warnings" );
   return exitOk;
}

} // namespace Host
