// What the watch over a board costs in a round, beside the two transfers of its supplies.
#include "health/Monitor.h"

#include <benchmark/benchmark.h>

#include <stdexcept>

namespace {

using namespace Health;
using BoardFiles::Kind;

ValueReport valueOf( const char *name, const char *unit, Scalar value ) {
   return { .reading = { .name = name, .unit = unit, .value = std::move( value ) } };
}

// As many values as serve has of such an object.
std::vector<ValueReport> valuesOf( const BoardFiles::ObjectDescription &object ) {
   switch ( object.kind ) {
   case Kind::TempSensor:
      return { valueOf( "temperature", "°C", 30.0 ) };
   case Kind::Fan:
      return { valueOf( "speed", "rpm", int64_t{ 12000 } ), valueOf( "duty", "%", 50.0 ) };
   case Kind::Psu:
      return { valueOf( "power_ok", "", int64_t{ 1 } ), valueOf( "input_current", "A", 1.2 ),
               valueOf( "output_current", "A", 21.5 ),  valueOf( "input_voltage", "V", 230.0 ),
               valueOf( "output_voltage", "V", 12.0 ),  valueOf( "input_power", "W", 280.0 ),
               valueOf( "output_power", "W", 257.0 ) };
   case Kind::Xcvr:
      return { valueOf( "presence", "", true ), valueOf( "mod_sel", "", int64_t{ 0 } ),
               valueOf( "lp_mode", "", int64_t{ 0 } ), valueOf( "reset", "", int64_t{ 0 } ),
               valueOf( "interrupt", "", int64_t{ 0 } ) };
   case Kind::Slot:
      return { valueOf( "presence", "", std::string( "frontToBackAirflow 24000 KF-4056" ) ) };
   case Kind::Gpio:
      return { valueOf( "bit", "", int64_t{ 1 } ) };
   default:
      if ( !object.name.ends_with( "-status" ) )
         return {};
      return { valueOf( "status_word", "", std::string( "0x0000" ) ),
               valueOf( "status_registers", "", std::string( "0x79=0x0000" ) ) };
   }
}

// Argument 1: nothing of one bus can be read.
void HealthUpdate( benchmark::State &state ) {
   BoardFiles::Findings findings;
   const auto board =
      BoardFiles::loadBoard( "boards/kelt", "boards/libOrbisDriversKelt.drivers.json", findings );
   if ( !board )
      throw std::runtime_error( "run it in the project's folder" );
   BoardReport report;
   for ( const auto &object : board->objects ) {
      report.push_back( { .name = object.name, .values = valuesOf( object ) } );
      const bool isDead =
         state.range( 0 ) == 1 && !object.chips.empty() && object.chips[0].bus == "scd(4):1:5";
      if ( isDead )
         report.back().state = State::Unreadable;
   }
   Surroundings around;
   around.evidence = { { .bus = "scd(4):1:5",
                         .chips = { { "", 0x2e, 9, 3, BusFault::Timeout } } } };
   Monitor monitor( *board, 3 );
   Instant now;
   for ( auto _ : state ) {
      now.steady += std::chrono::seconds( 1 );
      now.wall += std::chrono::seconds( 1 );
      benchmark::DoNotOptimize( monitor.update( report, around, now ) );
   }
}
BENCHMARK( HealthUpdate )
   ->ArgName( "dead_bus" )
   ->Arg( 0 )
   ->Arg( 1 )
   ->Unit( benchmark::kMicrosecond );

} // namespace
