#include "boardfiles/Board.h"
#include "host/commands/Commands.h"
#include "host/plugin/Child.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>

namespace {

using Host::Options;

int run( const Options &options ) {
   Host::setUpLog( options );
   if ( options.command == Options::Command::Check )
      return Host::check( options );
   if ( options.command == Options::Command::Events )
      return Host::events( options );
   if ( options.command == Options::Command::Acknowledge )
      return Host::acknowledge( options );
   if ( options.command == Options::Command::Module && !options.image.empty() )
      return Host::moduleOfFile( options );
   BoardFiles::Findings findings;
   const auto board = BoardFiles::loadBoard( options.board, options.drivers, findings );
   for ( const BoardFiles::Finding &finding : findings )
      fmt::print( stderr, "{}\n", BoardFiles::toText( finding ) );
   if ( !board )
      return options.command == Options::Command::Health ? Host::exitUnknown : Host::exitBadBoard;
   switch ( options.command ) {
   case Options::Command::Show:
      return Host::show( *board, options );
   case Options::Command::Health:
      return Host::health( *board, options );
   case Options::Command::Why:
      return Host::why( *board, options );
   case Options::Command::Module:
      return Host::module( *board, options );
   case Options::Command::Modules:
      return Host::modules( *board, options );
   case Options::Command::Watch:
      return Host::watch( *board, options );
   case Options::Command::Serve:
      return Host::serve( *board, options );
   case Options::Command::Act:
      return Host::act( *board, options );
   default:
      return Host::exitOk;
   }
}

} // namespace

int main( int argc, char **argv ) {
   int exitCode = Host::exitOk;
   const Options options = Host::parseCommandLine( argc, argv, exitCode );
   if ( options.command == Options::Command::Nothing )
      return exitCode;
   if ( options.command == Options::Command::Child )
      return Host::runChild( Host::childSocket, Host::childPage );
   try {
      return run( options );
   } catch ( const std::exception &exception ) {
      spdlog::error( "{}", exception.what() );
      return options.command == Options::Command::Health ? Host::exitUnknown : Host::exitNoChild;
   }
}
