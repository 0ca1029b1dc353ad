// Plays random actions on the simulated Kelt board, through the plug-in and through the control
// socket, and prints every reading, status and trace.
#include "BoardControl.h"
#include "Objects.h"
#include "PrivateFolder.h"
#include "ReplayDaemon.h"
#include "StartedProgram.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <cstdio>
#include <cstdlib>
#include <exception>

// By design the plug-in never deletes its objects.
extern "C" const char *__lsan_default_suppressions() { return "leak:libOrbisDriversKelt"; }

namespace {

void play( uint32_t seed, unsigned count ) {
   const TestSupport::PrivateFolder folder;
   const std::string socket = folder.file( "smbus.sock" ), board = KELT_BOARD;
   setenv( "ORBIS_SMBUS_SOCKET", socket.c_str(), 1 );
   TestSupport::StartedProgram server( { ORBIS_SMBUSD, "--speed", "0", "--simulate",
                                         board + "/topology.json", "--simulation",
                                         board + "/simulation.json" } );
   if ( !server.waitForError( "serving" ) )
      throw std::runtime_error( "the server doesn't start: " + server.errors() );
   BoardControl control( socket + ".control" );
   Objects objects( ORBIS_PLUGIN, board );
   Random random( seed );
   const auto passes = [&]( unsigned milliseconds ) { control.step( milliseconds ); };

   for ( unsigned action = 1; action <= count; ++action ) {
      ReplayDaemon::forgetOtherPointers();
      fmt::print( "{} ", action );
      switch ( random.below( 10 ) ) {
      case 0:
         fmt::print( "{}\n", control.doSomething( random ) );
         break;
      case 1: {
         const unsigned milliseconds = 50 * ( 1 + random.below( 40 ) );
         fmt::print( "wait {} ms\n", milliseconds );
         ReplayDaemon::advance( milliseconds, passes );
         break;
      }
      default: {
         const Operation &operation = random.oneOf( random.oneOf( objects.operationsByType() ) );
         fmt::print( "{}\n", operation.words );
         fmt::print( "{}\n", operation.run( random ) );
      }
      }
      std::fflush( stdout ); // what is printed so far is seen if this action is the process's last
   }
   ReplayDaemon::forgetOtherPointers();
   control.clearFaults( "cpld" );
   fmt::print( "powercycle\n-> {}\n",
               int( objects.system()->ops->powercycle( objects.system() ) ) );
}

} // namespace

int main( int argc, char **argv ) {
   CLI::App app(
      "Plays random actions on the simulated Kelt board and prints what comes of them." );
   uint32_t seed = 1;
   unsigned count = 10000;
   app.add_option( "--seed", seed, "What the actions follow from" )->capture_default_str();
   app.add_option( "--count", count, "How many" )->capture_default_str();
   CLI11_PARSE( app, argc, argv );
   try {
      play( seed, count );
   } catch ( const std::exception &error ) {
      fmt::print( stderr, "replay_actions: {}\n", error.what() );
      return EXIT_FAILURE;
   }
   return EXIT_SUCCESS;
}
