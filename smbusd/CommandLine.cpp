#include "smbusd/CommandLine.h"

#include "commandline/WrongUsage.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <string>

namespace Smbusd {

namespace {

void describeSources( CLI::App &app, Options &options ) {
   auto *simulate =
      app.add_option( "--simulate", options.topology, "Simulate the board of this topology file" );
   auto *simulation =
      app.add_option( "--simulation", options.simulation, "The chips of the simulated board" );
   simulate->needs( simulation )->option_text( "TOPOLOGY" );
   simulation->needs( simulate )->option_text( "FILE" );
   app.add_option( "--speed", options.speed,
                   "Seconds of the simulation in a real second; at 0 its clock moves only by "
                   "orbis-smbus sim step" )
      ->check( CLI::Range( 0.0, 1e6 ) )
      ->needs( simulate )
      ->capture_default_str();
   app.add_flag(
         "--wire-time", options.wireTime,
         "Each transfer of the simulated board takes as long as its bits do at the clock of "
         "its bus" )
      ->needs( simulate );
   app.add_option_function<std::vector<std::string>>(
         "--export-adapter",
         [&options]( const std::vector<std::string> &texts ) {
            for ( const std::string &text : texts ) {
               const auto bus = Bus::parseRootBusId( text );
               if ( !bus )
                  throw CLI::ValidationError( "not a bus: " + text +
                                              "; write it as i2c:0 or scd(4):1:2" );
               options.exported.push_back( *bus );
            }
         },
         "Make a simulated bus an i2c adapter of this machine, for kernel drivers and i2c programs "
         "(needs root and the modules vhci-hcd, i2c-tiny-usb and i2c-dev). Repeat it for several" )
      ->allow_extra_args( false )
      ->needs( simulate )
      ->option_text( "BUS" );
   auto *routes =
      app.add_option( "--routes", options.routes,
                      "Serve the busses of this file: Linux adapters, I/O ports, simulated busses. "
                      "Without it, all simulated busses are served" )
         ->option_text( "FILE" );
   auto *replay = app.add_option( "--replay", options.replayFrom,
                                  "Answer every transaction as this recording has it" )
                     ->option_text( "FILE" )
                     ->excludes( simulate )
                     ->excludes( routes );
   app.add_flag( "--as-slow", options.asSlow,
                 "Each answer of the recording takes as long as it "
                 "took when it was recorded" )
      ->needs( replay );
}

void describeSockets( CLI::App &app, Options &options ) {
   app.add_option( "--socket", options.socket, "The server's Unix socket" )
      ->envname( "ORBIS_SMBUS_SOCKET" )
      ->capture_default_str();
   app.add_option( "--control", options.control,
                   "The Unix socket that controls the simulation; default: "
                   "SOCKET.control" );
   app.add_option( "--read-socket", options.readSocket,
                   "The Unix socket where one can only read; default: SOCKET.read" );
   app.add_option( "--group", options.group,
                   "The group that may use the sockets; with --read-group, that may write, and "
                   "drive the simulation" );
   app.add_option( "--read-group", options.readGroup,
                   "The group that may only read: at SOCKET.read, and at the control socket" )
      ->option_text( "NAME" );
   app.add_option( "--control-group", options.controlGroup,
                   "The group that may drive the simulation at the control socket; without it and "
                   "--read-group whoever can connect may" )
      ->option_text( "NAME" );
   app.add_option( "--write-policy", options.writePolicy,
                   "Other users than this server's may only write what a row of this file allows" )
      ->option_text( "FILE" );
   app.add_option( "--clients-per-process", options.clientsPerProcess,
                   "How many of the 64 connections one process may have" )
      ->check( CLI::Range( 1, 64 ) )
      ->capture_default_str();
}

void describeRecording( CLI::App &app, Options &options ) {
   auto *record = app.add_option( "--record", options.recordTo,
                                  "Add every transaction with its answer and times to this file" )
                     ->option_text( "FILE" );
   app.add_option( "--record-keep", options.recordKeep,
                   "Keep the newest part of the recording, at most SIZE (64M or more; units K, M, "
                   "G), in FILE and FILE.1. What is around a failure is kept in FILE.failed-TIME" )
      ->transform( CLI::AsSizeValue( false ) )
      ->check( []( const std::string &bytes ) -> std::string {
         constexpr uint64_t least = 64u << 20; // half of it has room for the largest transaction
         return std::stoull( bytes ) < least ? "less than 64M has no room for large transactions"
                                             : "";
      } )
      ->option_text( "SIZE" )
      ->needs( record );
}

void describeChecks( CLI::App &app, Options &options ) {
   auto *check = app.add_subcommand(
      "check-routes", "Check a routes file and print what each bus is on this machine" );
   check->add_option( "FILE", options.routesToCheck, "The routes file" )->required();
   check->add_flag( "--elsewhere", options.elsewhere,
                    "Check only the file: its adapters and ports are on another machine" );
   auto *policy = app.add_subcommand(
      "check-policy", "Check a policy of raw writes and print who may write what, and why" );
   policy->add_option( "FILE", options.policyToCheck, "The policy file" )->required();
   policy->add_flag( "--elsewhere", options.elsewhere,
                     "Check only the file: its users and groups are on another machine" );
   policy->footer( "Exit codes: 0 no error, 1 errors, 2 wrong usage." );
   check->footer( "Exit codes: 0 no error, 1 errors, 2 wrong usage." );
}

void describe( CLI::App &app, Options &options ) {
   app.set_version_flag( "-V,--version", "orbis-smbusd " ORBIS_VERSION );
   app.require_subcommand( 0, 1 );
   describeSockets( app, options );
   describeSources( app, options );
   app.add_option( "--transaction-limit", options.transactionLimit,
                   "The longest time that a transaction may take, in milliseconds" )
      ->check( CLI::Range( 1, 9000 ) ) // clients wait ten seconds
      ->capture_default_str();
   app.add_option( "--log-level", options.logLevel,
                   "The least level that is logged to standard error" )
      ->check( CLI::IsMember( { "trace", "debug", "info", "warn", "error", "critical", "off" } ) )
      ->capture_default_str();
   describeRecording( app, options );
   describeChecks( app, options );
   app.footer( "Exit codes: 0 stopped by SIGTERM or SIGINT, 1 could not start, 2 wrong usage." );
}

} // namespace

std::optional<ExitCode> parseCommandLine( int argc, char **argv, Options &options ) {
   CLI::App app( "Carries out SMBus transactions for its clients, on real busses or on a simulated "
                 "board.",
                 "orbis-smbusd" );
   describe( app, options );
   try {
      app.parse( argc, argv );
      if ( app.get_subcommands().empty() && options.topology.empty() && options.routes.empty() &&
           options.replayFrom.empty() )
         throw CLI::RequiredError( "--simulate, --routes or --replay" );
   } catch ( const CLI::ParseError &end ) {
      return CommandLine::report( app, end ) ? Done : WrongUsage;
   }
   return {};
}

} // namespace Smbusd
