#include "WatchedBoard.h"

#include "host/serve/BoardMetrics.h"
#include "orbis-smbus/Failures.h"
#include "orbis-smbus/SimCommands.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <spdlog/spdlog.h>

namespace {

constexpr double settle = 3; // as serve has it for its period

Health::Instant instantAt( Bus::Clock::Time time ) {
   return { std::chrono::steady_clock::time_point( time ),
            Health::WallTime( std::chrono::duration_cast<std::chrono::milliseconds>( time ) ) };
}

} // namespace

WatchedBoard::WatchedBoard( bool withModules )
   : board_( {}, false, withModules ), monitor_( board_.board(), settle ) {
   spdlog::set_level( spdlog::level::off ); // the faults are wanted
   board_.start();
   round();
}

void WatchedBoard::round() {
   board_.round();
   const Health::BoardReport report = board_.report();
   // As serve does.
   for ( size_t i = 0; i < report.size(); ++i )
      if ( const Host::ModuleRecord *module = board_.supervisor().module( i ) )
         for ( const auto &[value, limits] : module->limits )
            monitor_.knows( i, value, limits );
   Health::Surroundings around;
   if ( Health::hasUnreadable( report ) )
      around.evidence = board_.evidence();
   for ( const Health::Event &event :
         monitor_.update( report, around, instantAt( board_.time() ) ) ) {
      told_.push_back( fmt::format(
         "{} {}{}{}",
         event.what == Health::Event::What::Set ? nameOf( event.level ) : nameOf( event.what ),
         event.cause, event.explains.empty() ? "" : ": ", fmt::join( event.explains, ", " ) ) );
      words_[event.cause] = event.words;
      ++counts_[{ event.what, event.level }];
   }
   afterRound_();
}

std::string WatchedBoard::metrics() {
   Health::BoardReport report = board_.report();
   monitor_.describe( report );
   return Host::boardMetrics(
      { .board = board_.board(),
        .name = "kelt",
        .report = std::move( report ),
        .level = monitor_.level(),
        .causes = monitor_.causes(),
        .rules = monitor_.rules(),
        .events = counts_,
        .serve = Host::serveFigures( board_.supervisor(), { { 200, 1 } } ),
        .loads = { std::make_shared<const SmbusControl::Response>( board_.loads() ) } },
      Metrics::Format::Text );
}

SmbusControl::Response WatchedBoard::ask( const SmbusControl::Request &request ) {
   SmbusControl::Response response;
   if ( request.has_step() ) {
      behind_ += request.step();
      for ( ; behind_ >= 1 - 1e-6; behind_ -= 1 )
         round();
   } else if ( request.has_time() ) {
      response.mutable_state()->set_seconds(
         std::chrono::duration<double>( board_.time() ).count() + behind_ );
   } else {
      response = board_.ask( request );
   }
   if ( !response.error().empty() )
      throw SmbusClient::Failed( response.error() );
   return response;
}

void WatchedBoard::sim( const std::vector<std::string> &words ) {
   ask( SmbusClient::parseSimCommand( words ) );
}

void WatchedBoard::clearFaults( const std::string &supply ) {
   board_.act( supply + "-status", { Host::clearFaults, {} } );
}
