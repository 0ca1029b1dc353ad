// orbis-smbusd: carries SMBus transactions out for its clients.
#include "RootBusId.h"
#include "SimulationClock.h"
#include "board/SimulatedBoard.h"
#include "control/ControlServer.h"
#include "server/Server.h"

#include <CLI/CLI.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>
#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/spdlog.h>

#include <csignal>
#include <exception>
#include <memory>
#include <string>

namespace {

enum ExitCode { Stopped = 0, NotStarted = 1, Usage = 2 };

struct Options {
   std::string socket = "/run/orbis/smbus.sock";
   std::string control;
   std::string group;
   std::string topology;
   std::string simulation;
   std::string logLevel = "info";
   unsigned transactionLimit = 2000; // ms
   double speed = 1;
};

void describe( CLI::App &app, Options &options ) {
   app.set_version_flag( "--version", "orbis-smbusd " ORBIS_VERSION );
   app.add_option( "--socket", options.socket, "The Unix socket to serve at" )
      ->envname( "ORBIS_SMBUS_SOCKET" )
      ->capture_default_str();
   app.add_option( "--control", options.control,
                   "The Unix socket for the bench's side of the simulation; SOCKET.control "
                   "without it" );
   app.add_option( "--group", options.group, "The group that may use the socket" );
   auto *simulate =
      app.add_option( "--simulate", options.topology,
                      "Serve a simulated board with the wiring of this topology file" );
   auto *simulation = app.add_option( "--simulation", options.simulation,
                                      "The file with the simulated board's chips" );
   simulate->required()->needs( simulation )->option_text( "TOPOLOGY" );
   simulation->needs( simulate )->option_text( "FILE" );
   app.add_option( "--speed", options.speed,
                   "Seconds of the simulation in a real one; at 0 its clock moves only by hand" )
      ->check( CLI::Range( 0.0, 1e6 ) )
      ->needs( simulate )
      ->capture_default_str();
   app.add_option( "--transaction-limit", options.transactionLimit,
                   "The longest a transaction may take, in milliseconds" )
      ->check( CLI::Range( 1, 9000 ) ) // clients wait ten seconds
      ->capture_default_str();
   app.add_option( "--log-level", options.logLevel, "How much is logged to standard error" )
      ->check( CLI::IsMember( { "trace", "debug", "info", "warn", "error", "critical", "off" } ) )
      ->capture_default_str();
   app.footer( "Exit codes: 0 stopped by SIGTERM or SIGINT, 1 could not start, 2 wrong usage." );
}

void serve( const Options &options ) {
   using namespace Smbusd;
   const RealClock clock;
   SimulationClock simulated( clock, options.speed );
   SimulatedBoard board( options.topology, options.simulation, simulated );
   Tracer tracer;
   board.traceTo( tracer );
   Controls controls( board.bench(), simulated );
   boost::asio::io_context context( 1 );
   Dispatcher dispatcher( board.busses(), clock,
                          std::chrono::milliseconds( options.transactionLimit ) );
   Server server( context, std::make_unique<SocketFile>( options.socket, options.group ),
                  dispatcher );
   const std::string control =
      options.control.empty() ? options.socket + ".control" : options.control;
   ControlServer controlServer( context, std::make_unique<SocketFile>( control, options.group ),
                                controls, tracer );
   boost::asio::signal_set signals( context, SIGTERM, SIGINT );
   signals.async_wait( [&]( const auto &, int number ) {
      spdlog::info( "stopping on {}", number == SIGTERM ? "SIGTERM" : "SIGINT" );
      server.stop();
      controlServer.stop();
   } );
   for ( const auto &[id, bus] : board.busses() )
      spdlog::debug( "bus {}", toString( id ) );
   spdlog::info( "serving {} at {}", options.topology, options.socket );
   context.run();
}

} // namespace

int main( int argc, char **argv ) {
   CLI::App app( "Carries out SMBus transactions for its clients, on a simulated board.",
                 "orbis-smbusd" );
   Options options;
   describe( app, options );
   try {
      app.parse( argc, argv );
   } catch ( const CLI::ParseError &error ) {
      return app.exit( error ) == 0 ? Stopped : Usage;
   }
   spdlog::set_default_logger( spdlog::stderr_color_mt( "orbis-smbusd" ) );
   spdlog::set_level( spdlog::level::from_str( options.logLevel ) );
   try {
      serve( options );
   } catch ( const std::exception &error ) {
      spdlog::critical( "{}", error.what() );
      return NotStarted;
   }
   return Stopped;
}
