#include "smbusd/Serve.h"

#include "simulator/board/Controls.h"
#include "simulator/board/SimulatedBoard.h"
#include "simulator/board/SimulationClock.h"
#include "simulator/bus/WireTimedBus.h"
#include "smbusd/accounts/Report.h"
#include "smbusd/control/ControlConversation.h"
#include "smbusd/export/ExportedAdapter.h"
#include "smbusd/lease/CarryOut.h"
#include "smbusd/lease/Lease.h"
#include "smbusd/record/Recorder.h"
#include "smbusd/record/Replay.h"
#include "smbusd/rights/ReadOnly.h"
#include "smbusd/rights/WriteGuard.h"
#include "smbusd/routes/RoutedBusses.h"
#include "smbusd/server/LogLimit.h"
#include "smbusd/server/Outbox.h"
#include "smbusd/server/Server.h"
#include "smbusd/server/SmbusConversation.h"
#include "sockets/ControlGroup.h"
#include "sockets/Heartbeat.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>
#include <fmt/format.h>
#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/spdlog.h>

#include <unistd.h>

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

// For all that clients send and get, of all sockets.
constexpr size_t allBuffers = 64u << 20;
constexpr Limits readLimits{ .clients = 32, .clientsPerProcess = 8 };
constexpr Limits controlLimits{ .clients = 16, .clientsPerProcess = 4 };

// A simulated board with its clock and its controls.
struct Simulation {
   Simulation( const Options &options, const Bus::Clock &real, Bus::Tracer &tracer )
      : clock( real, options.speed ), board( options.topology, options.simulation, clock ) {
      board.traceTo( tracer );
   }
   Simulator::SimulationClock clock;
   Simulator::SimulatedBoard board;
   Simulator::Controls controls{ board.bench(), clock };
};

// Adds the clocks of the wires that the routes say.
Bus::Busses routed( const BoardFiles::RoutesFile &routes, Bus::Busses simulated,
                    WireClocks &wireClocks ) {
   RoutedBusses busses( std::move( simulated ), {}, RoutedBusses::Use::Serves );
   for ( const BoardFiles::Route &route : routes.routes ) {
      busses.add( route,
                  []( const std::string &why ) { spdlog::warn( "not available yet: {}", why ); } );
      if ( !busses.description().empty() )
         spdlog::info( "{} is {}", toString( route.bus ), busses.description() );
   }
   for ( const auto &[bus, clock] : busses.wireClocks() )
      wireClocks[bus] = clock;
   return busses.take();
}

Executors executorsFor( const Options &options, const BoardFiles::RoutesFile *routes,
                        Simulation *simulation, const Bus::Clock &clock ) {
   if ( !options.replayFrom.empty() )
      return replay( options.replayFrom, [asSlow = options.asSlow]( Bus::Clock::Time took ) {
         if ( asSlow )
            std::this_thread::sleep_for( took );
      } );
   Bus::Busses busses;
   WireClocks wireClocks;
   if ( simulation ) {
      busses = simulation->board.busses();
      wireClocks = simulation->board.wireClocks();
      if ( options.wireTime )
         busses = Simulator::wireTimed( std::move( busses ), wireClocks );
   }
   if ( routes )
      busses = routed( *routes, std::move( busses ), wireClocks );
   return executorsOn( std::move( busses ), clock, wireClocks );
}

std::vector<std::unique_ptr<Export::ExportedAdapter>> exportAdapters( const Options &options,
                                                                      Simulation *simulation ) {
   std::vector<std::unique_ptr<Export::ExportedAdapter>> exported;
   std::chrono::seconds patience( 10 );
   for ( const Bus::RootBusId &id : options.exported ) {
      const std::string name = toString( id );
      try {
         exported.push_back(
            std::make_unique<Export::ExportedAdapter>( simulation->board.bus( id ), name ) );
      } catch ( const std::out_of_range & ) {
         throw Export::ExportError(
            fmt::format( "--export-adapter: the simulated board has no {}", name ) );
      }
      if ( const auto number = exported.back()->adapter( patience ) )
         spdlog::info( "{} is exported as {}", name, Linux::describeAdapter( *number, {} ) );
      else {
         spdlog::warn(
            "{} is exported, but the kernel made no adapter of it; is the module i2c-tiny-usb "
            "loaded?",
            name );
         patience = {}; // it would not appear for the others either
      }
   }
   return exported;
}

// Works for a lease as long as it exists.
class LeaseThread {
 public:
   explicit LeaseThread( Lease &lease ) : lease_( lease ), thread_( [&lease] { lease.run(); } ) {}
   ~LeaseThread() {
      lease_.stop();
      thread_.join();
   }
   LeaseThread( const LeaseThread & ) = delete;
   LeaseThread &operator=( const LeaseThread & ) = delete;

 private:
   Lease &lease_;
   std::thread thread_;
};

// The writes of a lease are the server's own, so not everybody may leave some.
SmbusControl::Response leaseFor( Lease &lease, const SmbusControl::Lease &asked,
                                 const Peer &peer ) {
   SmbusControl::Response response;
   try {
      if ( peer.user != 0 && peer.user != geteuid() )
         throw LeaseError( fmt::format(
            "a lease is for the server's own user, and user {} is another", peer.user ) );
      *response.mutable_lease() = lease.take( asked, peer );
   } catch ( const LeaseError &error ) {
      response.set_error( error.what() );
   }
   return response;
}

// The file that names the busses.
const std::string &sourceOf( const Options &options ) {
   if ( !options.replayFrom.empty() )
      return options.replayFrom;
   return options.routes.empty() ? options.topology : options.routes;
}

NamedMuxes muxesOf( const Options &options, const std::optional<BoardFiles::RoutesFile> &routes ) {
   NamedMuxes muxes;
   if ( !options.topology.empty() )
      addMuxes( *BoardFiles::loadTopology( options.topology ), muxes );
   if ( routes )
      addMuxes( *routes, muxes );
   return muxes;
}

// Tells raw writes with a limit of their own: a loop of them must not leave out other warnings.
std::shared_ptr<spdlog::logger> rawWriteLog() {
   constexpr unsigned linesPerSecond = 20;
   auto logger = std::make_shared<spdlog::logger>(
      "orbis-smbusd",
      std::make_shared<LogLimit>( std::make_shared<spdlog::sinks::stderr_color_sink_mt>(),
                                  linesPerSecond ) );
   logger->set_level( spdlog::get_level() );
   return logger;
}

WriteGuard writeGuardFor( const Options &options, const NamedMuxes &muxes,
                          const std::shared_ptr<spdlog::logger> &log ) {
   std::optional<BoardFiles::WritePolicy> policy;
   if ( !options.writePolicy.empty() ) {
      policy = BoardFiles::loadWritePolicy( options.writePolicy );
      spdlog::info( "raw writes are only for {} row{} of {}", policy->rows.size(),
                    policy->rows.size() == 1 ? "" : "s", options.writePolicy );
   }
   return { muxes, std::move( policy ), geteuid(), People::ofThisMachine(),
            [log]( const std::string &words ) { log->warn( "{}", words ); } };
}

// Where there is a group for reading, driving the simulation is for the group that may write.
WhyOnlyLooks whyOnlyLooks( const Options &options ) {
   if ( options.readGroup.empty() && options.controlGroup.empty() )
      return {};
   const std::string &name = options.controlGroup.empty() ? options.group : options.controlGroup;
   return [group = Sockets::ControlGroup( name )]( const Peer &peer ) {
      const Sockets::Credentials client = Sockets::credentialsOf( peer.socket );
      return group.has( client ) ? std::string() : group.whyNot( client );
   };
}

// The kernel may never end a transfer. Then its thread can't be joined, and the process must end
// without it.
void abandonStuckBus( Dispatcher &dispatcher, std::chrono::milliseconds limit ) {
   if ( dispatcher.stop( limit + std::chrono::seconds( 1 ) ) )
      return;
   spdlog::error( "a bus is stuck; its transaction is abandoned" );
   spdlog::shutdown();
   std::_Exit( EXIT_SUCCESS );
}

} // namespace

void serve( const Options &options ) {
   const Bus::RealClock clock;
   Bus::Tracer tracer;
   std::optional<Simulation> simulation;
   if ( !options.topology.empty() )
      simulation.emplace( options, clock, tracer );
   std::optional<BoardFiles::RoutesFile> routes;
   if ( !options.routes.empty() )
      routes = BoardFiles::loadRoutes( options.routes );
   const NamedMuxes muxes = muxesOf( options, routes );
   Executors executors = executorsFor( options, routes ? &*routes : nullptr,
                                       simulation ? &*simulation : nullptr, clock );
   for ( const auto &[id, executor] : executors )
      spdlog::debug( "bus {}", toString( id ) );
   std::optional<Recorder> recorder;
   Dispatcher::Observer observer;
   if ( !options.recordTo.empty() ) {
      recorder.emplace( options.recordTo, ORBIS_VERSION, clock, options.recordKeep );
      observer = std::bind_front( &Recorder::write, &*recorder );
   }
   boost::asio::io_context context( 1 );
   const std::chrono::milliseconds limit( options.transactionLimit );
   Dispatcher dispatcher( std::move( executors ), clock, limit, std::move( observer ) );
   const Limits limits{ .clientsPerProcess = options.clientsPerProcess };
   const size_t clients = limits.clients + readLimits.clients + controlLimits.clients;
   Buffers buffers( allBuffers - clients * Buffers::ownBytes -
                    controlLimits.clients * 2 * Outbox::maxBytes );
   const auto listenAt = []( const std::string &path, const std::string &group ) {
      return std::make_unique<Sockets::SocketFile>( path, group );
   };
   const std::string &readGroup = options.readGroup.empty() ? options.group : options.readGroup;
   const std::shared_ptr<spdlog::logger> rawWrites = rawWriteLog();
   const WriteGuard writeGuard = writeGuardFor( options, muxes, rawWrites );
   const ReadOnly readOnly( muxes, options.socket );
   Server server( context, listenAt( options.socket, options.group ),
                  conversationsWith( dispatcher, &writeGuard ), limits, buffers );
   Server readServer(
      context,
      listenAt( options.readSocket.empty() ? options.socket + ".read" : options.readSocket,
                readGroup ),
      conversationsWith( dispatcher, &readOnly ), readLimits, buffers );
   const auto exported = exportAdapters( options, simulation ? &*simulation : nullptr );
   Lease lease( clock, std::bind_front( carryOut, std::ref( dispatcher ) ) );
   const LeaseThread leaseThread( lease );
   const auto answer = [&clock, &lease, &simulation, busses = dispatcher.accounts()](
                          const SmbusControl::Request &request, const Peer &peer ) {
      if ( request.has_lease() )
         return leaseFor( lease, request.lease(), peer );
      if ( request.has_load() || request.has_last() ) {
         SmbusControl::Response told = report( request, busses, clock.now() );
         *told.mutable_lease() = lease.state();
         return told;
      }
      return simulation ? simulation->controls.answer( request )
                        : answerWithoutBoard( request, peer );
   };
   Server control(
      context,
      listenAt( options.control.empty() ? options.socket + ".control" : options.control,
                readGroup ),
      controlConversations( answer, tracer, whyOnlyLooks( options ) ), controlLimits, buffers );
   // The count of the raw writes that were left out is told then, too.
   Sockets::Heartbeat heartbeat( context, [&rawWrites] { rawWrites->flush(); } );
   boost::asio::signal_set signals( context, SIGTERM, SIGINT );
   signals.async_wait( [&]( const auto &, int number ) {
      spdlog::info( "stopping on {}", number == SIGTERM ? "SIGTERM" : "SIGINT" );
      server.stop();
      readServer.stop();
      control.stop();
      heartbeat.stop();
   } );
   spdlog::info( "serving {} at {}", sourceOf( options ), options.socket );
   context.run();
   abandonStuckBus( dispatcher, limit );
}

bool checkRoutes( const Options &options ) {
   const auto routes = BoardFiles::loadRoutes( options.routesToCheck );
   if ( options.elsewhere )
      return true;
   RoutedBusses busses( {}, {}, RoutedBusses::Use::Looks );
   bool valid = true;
   for ( const BoardFiles::Route &route : routes.routes ) {
      const auto print = [&]( const std::string &what ) {
         fmt::print( "{:16} {}\n", toString( route.bus ), what );
      };
      if ( std::holds_alternative<BoardFiles::SimulatedRoute>( route.to ) ) {
         print( "simulated" );
         continue;
      }
      try {
         std::string missing;
         busses.add( route, [&]( const std::string &why ) { missing = why; } );
         print( missing.empty() ? busses.description() : "not available yet" );
         if ( !missing.empty() )
            fmt::print( stderr, "{}\n", missing );
      } catch ( const BoardFiles::BoardError &error ) {
         valid = false;
         fmt::print( stderr, "{}\n", error.what() );
      }
   }
   return valid;
}

} // namespace Smbusd
