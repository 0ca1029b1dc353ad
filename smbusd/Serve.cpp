#include "Serve.h"

#include "SimulationClock.h"
#include "board/SimulatedBoard.h"
#include "control/ControlServer.h"
#include "lend/LentAdapter.h"
#include "record/Recorder.h"
#include "record/Replay.h"
#include "routes/RoutedBusses.h"
#include "server/Server.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>
#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>
#include <vector>

namespace Smbusd {

namespace {

// A simulated board with its clock and its bench's side.
struct Simulation {
   Simulation( const Options &options, const Clock &real )
      : clock( real, options.speed ), board( options.topology, options.simulation, clock ) {
      board.traceTo( tracer );
   }
   SimulationClock clock;
   SimulatedBoard board;
   Tracer tracer;
   Controls controls{ board.bench(), clock };
};

Busses routed( const std::string &path, Busses simulated ) {
   const auto routes = loadRoutes( path );
   RoutedBusses busses( std::move( simulated ), {} );
   for ( const Route &route : routes->routes ) {
      busses.add( route, []( const std::string &why ) { spdlog::warn( "not yet: {}", why ); } );
      if ( !busses.lastCarrier().empty() )
         spdlog::info( "{} is {}", toString( route.bus ), busses.lastCarrier() );
   }
   return busses.take();
}

Carriers carriersFor( const Options &options, Simulation *simulation, const Clock &clock ) {
   if ( !options.replayFrom.empty() )
      return replay( options.replayFrom, [asSlow = options.asSlow]( Clock::Time took ) {
         if ( asSlow )
            std::this_thread::sleep_for( took );
      } );
   Busses busses = simulation ? simulation->board.busses() : Busses();
   if ( !options.routes.empty() )
      busses = routed( options.routes, std::move( busses ) );
   return carriersOn( std::move( busses ), clock );
}

std::vector<std::unique_ptr<Lend::LentAdapter>> lend( const Options &options,
                                                      Simulation *simulation ) {
   std::vector<std::unique_ptr<Lend::LentAdapter>> lent;
   std::chrono::seconds patience( 10 );
   for ( const RootBusId &id : options.lent ) {
      const std::string name = toString( id );
      try {
         lent.push_back( std::make_unique<Lend::LentAdapter>( simulation->board.bus( id ), name ) );
      } catch ( const std::out_of_range & ) {
         throw Lend::LendError( fmt::format( "the simulated board has no {} to lend", name ) );
      }
      if ( const auto number = lent.back()->adapter( patience ) )
         spdlog::info( "{} is lent as {}", name, Linux::describeAdapter( *number, {} ) );
      else {
         spdlog::warn( "{} is lent, and the kernel makes no adapter of it; the module i2c-tiny-usb "
                       "does",
                       name );
         patience = {}; // nor will it of the others
      }
   }
   return lent;
}

// What is served, by its file.
const std::string &servedBy( const Options &options ) {
   if ( !options.replayFrom.empty() )
      return options.replayFrom;
   return options.routes.empty() ? options.topology : options.routes;
}

// A transfer that the kernel never ends can't be ended here either, and its thread can't be joined.
void leaveBehind( Dispatcher &dispatcher, std::chrono::milliseconds limit ) {
   if ( dispatcher.stop( limit + std::chrono::seconds( 1 ) ) )
      return;
   spdlog::error( "a bus is stuck; its transaction is left behind" );
   spdlog::shutdown();
   std::_Exit( EXIT_SUCCESS );
}

} // namespace

void serve( const Options &options ) {
   const RealClock clock;
   std::optional<Simulation> simulation;
   if ( !options.topology.empty() )
      simulation.emplace( options, clock );
   Carriers carriers = carriersFor( options, simulation ? &*simulation : nullptr, clock );
   for ( const auto &[id, carrier] : carriers )
      spdlog::debug( "bus {}", toString( id ) );
   std::optional<Recorder> recorder;
   Dispatcher::Observer observer;
   if ( !options.recordTo.empty() ) {
      recorder.emplace( options.recordTo, ORBIS_VERSION, clock );
      observer = std::bind_front( &Recorder::write, &*recorder );
   }
   boost::asio::io_context context( 1 );
   const std::chrono::milliseconds limit( options.transactionLimit );
   Dispatcher dispatcher( std::move( carriers ), clock, limit, std::move( observer ) );
   Server server( context, std::make_unique<SocketFile>( options.socket, options.group ),
                  dispatcher );
   const auto lent = lend( options, simulation ? &*simulation : nullptr );
   std::optional<ControlServer> control;
   if ( simulation ) {
      const std::string path =
         options.control.empty() ? options.socket + ".control" : options.control;
      control.emplace( context, std::make_unique<SocketFile>( path, options.group ),
                       simulation->controls, simulation->tracer );
   }
   boost::asio::signal_set signals( context, SIGTERM, SIGINT );
   signals.async_wait( [&]( const auto &, int number ) {
      spdlog::info( "stopping on {}", number == SIGTERM ? "SIGTERM" : "SIGINT" );
      server.stop();
      if ( control )
         control->stop();
   } );
   spdlog::info( "serving {} at {}", servedBy( options ), options.socket );
   context.run();
   leaveBehind( dispatcher, limit );
}

bool checkRoutes( const Options &options ) {
   const auto routes = loadRoutes( options.routesToCheck );
   if ( options.elsewhere )
      return true;
   RoutedBusses busses( {}, {} );
   bool well = true;
   for ( const Route &route : routes->routes ) {
      const auto tell = [&]( const std::string &what ) {
         fmt::print( "{:16} {}\n", toString( route.bus ), what );
      };
      if ( std::holds_alternative<SimulatedRoute>( route.to ) ) {
         tell( "simulated" );
         continue;
      }
      try {
         std::string missing;
         busses.add( route, [&]( const std::string &why ) { missing = why; } );
         tell( missing.empty() ? busses.lastCarrier() : "not yet" );
         if ( !missing.empty() )
            fmt::print( stderr, "{}\n", missing );
      } catch ( const BoardError &error ) {
         well = false;
         fmt::print( stderr, "{}\n", error.what() );
      }
   }
   return well;
}

} // namespace Smbusd
