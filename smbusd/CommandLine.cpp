#include "smbusd/CommandLine.h"

#include <CLI/CLI.hpp>

namespace Smbusd {

namespace {

void describeSources( CLI::App &app, Options &options ) {
   auto *simulate = app.add_option( "--simulate", options.topology,
                                    "Simulate a board with the wiring of this topology file" );
   auto *simulation = app.add_option( "--simulation", options.simulation,
                                      "The file with the simulated board's chips" );
   simulate->needs( simulation )->option_text( "TOPOLOGY" );
   simulation->needs( simulate )->option_text( "FILE" );
   app.add_option( "--speed", options.speed,
                   "Seconds of the simulation in a real one; at 0 its clock moves only by hand" )
      ->check( CLI::Range( 0.0, 1e6 ) )
      ->needs( simulate )
      ->capture_default_str();
   app.add_option_function<std::vector<std::string>>(
         "--lend-adapter",
         [&options]( const std::vector<std::string> &texts ) {
            for ( const std::string &text : texts ) {
               const auto bus = Bus::parseRootBusId( text );
               if ( !bus )
                  throw CLI::ValidationError( "not a bus: " + text );
               options.lent.push_back( *bus );
            }
         },
         "Lend a simulated bus to this machine's kernel as an adapter, for its drivers and all "
         "programs for i2c (root; the modules vhci-hcd, i2c-tiny-usb and i2c-dev). Repeated for "
         "several" )
      ->allow_extra_args( false )
      ->needs( simulate )
      ->option_text( "BUS" );
   auto *routes =
      app.add_option( "--routes", options.routes,
                      "Serve the busses of this file: Linux adapters, I/O ports, simulated ones. "
                      "Without it all that are simulated are served" )
         ->option_text( "FILE" );
   auto *replay = app.add_option( "--replay", options.replayFrom,
                                  "Answer from a recording: every transaction as it was then" )
                     ->option_text( "FILE" )
                     ->excludes( simulate )
                     ->excludes( routes );
   app.add_flag( "--as-slow", options.asSlow, "Take as long over each answer as it took then" )
      ->needs( replay );
}

void describeSockets( CLI::App &app, Options &options ) {
   app.add_option( "--socket", options.socket, "The Unix socket to serve at" )
      ->envname( "ORBIS_SMBUS_SOCKET" )
      ->capture_default_str();
   app.add_option( "--control", options.control,
                   "The Unix socket for the bench's side of the simulation; SOCKET.control "
                   "without it" );
   app.add_option( "--group", options.group, "The group that may use the socket" );
}

void describeChecks( CLI::App &app, Options &options ) {
   auto *check = app.add_subcommand(
      "check-routes", "Look through a routes file and tell what carries each bus here" );
   check->add_option( "FILE", options.routesToCheck, "The routes file" )->required();
   check->add_flag( "--elsewhere", options.elsewhere,
                    "The file alone: its adapters and ports are another machine's" );
   check->footer( "Exit codes: 0 all is well, 1 something is not, 2 wrong usage." );
}

} // namespace

void describe( CLI::App &app, Options &options ) {
   app.set_version_flag( "--version", "orbis-smbusd " ORBIS_VERSION );
   app.require_subcommand( 0, 1 );
   describeSockets( app, options );
   describeSources( app, options );
   app.add_option( "--transaction-limit", options.transactionLimit,
                   "The longest a transaction may take, in milliseconds" )
      ->check( CLI::Range( 1, 9000 ) ) // clients wait ten seconds
      ->capture_default_str();
   app.add_option( "--log-level", options.logLevel, "How much is logged to standard error" )
      ->check( CLI::IsMember( { "trace", "debug", "info", "warn", "error", "critical", "off" } ) )
      ->capture_default_str();
   app.add_option( "--record", options.recordTo,
                   "Add every transaction with its answer and times to this file" )
      ->option_text( "FILE" );
   describeChecks( app, options );
   app.footer( "Exit codes: 0 stopped by SIGTERM or SIGINT, 1 could not start, 2 wrong usage." );
}

void checkTogether( const CLI::App &app, const Options &options ) {
   if ( app.get_subcommands().empty() && options.topology.empty() && options.routes.empty() &&
        options.replayFrom.empty() )
      throw CLI::RequiredError( "--simulate, --routes or --replay" );
}

} // namespace Smbusd
