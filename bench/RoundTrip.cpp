// One register read, from the call of the driver to its answer, as multiples of a ping-pong: the
// same number of bytes sent and returned over the same kind of socket. What is above one is the
// cost of plug-in, messages and server. Rounds of both alternate, so that what else the machine
// does hits both.
#include "Measuring.h"
#include "PingPong.h"
#include "SimulatedServer.h"

#include <benchmark/benchmark.h>
#include <vector>

extern long allocations; // of this process so far, in CountingAllocator.cpp

namespace {

// Real time and processor time of both ends.
struct Cost {
   double real = 0;
   double processor = 0;
};

template <typename Call>
Cost costOf( pid_t other, Call call ) {
   constexpr int calls = 1000;
   clockid_t others{};
   clock_getcpuclockid( other, &others );
   const double real = secondsOf( CLOCK_MONOTONIC );
   const double processor = secondsOf( CLOCK_PROCESS_CPUTIME_ID ) + secondsOf( others );
   for ( int i = 0; i < calls; ++i )
      call();
   return { ( secondsOf( CLOCK_MONOTONIC ) - real ) / calls,
            ( secondsOf( CLOCK_PROCESS_CPUTIME_ID ) + secondsOf( others ) - processor ) / calls };
}

void ReadOverPingPong( benchmark::State &state ) {
   SimulatedServer &server = SimulatedServer::running();
   Ham::OrbisSmbusHam &ham = state.range( 1 ) ? server.ham( 2, 73 ) : server.ham( 1, 72 );
   uint8_t byte = 0;
   ham.read8( configuration, &byte );
   PingPong pingPong( ham.request_.ByteSizeLong() + 1, ham.response_.ByteSizeLong() + 1 );
   const auto placement = static_cast<Placement>( state.range( 0 ) );
   place( placement, server.process() );
   place( placement, pingPong.process() );
   std::vector<double> real, processor, microseconds;
   for ( auto _ : state ) {
      const Cost bare = costOf( pingPong.process(), [&] { pingPong.exchange(); } );
      const Cost reading = costOf( server.process(), [&] { ham.read8( configuration, &byte ); } );
      real.push_back( reading.real / bare.real );
      processor.push_back( reading.processor / bare.processor );
      microseconds.push_back( reading.real * 1e6 );
   }
   place( Free, getpid() );
   state.counters["ratio"] = median( real );
   state.counters["cpu_ratio"] = median( processor );
   state.counters["us"] = median( microseconds );
}

void Read8( benchmark::State &state ) {
   Ham::OrbisSmbusHam &ham = SimulatedServer::running().ham( 1, 72 );
   uint8_t byte = 0;
   for ( int i = 0; i < 10; ++i )
      ham.read8( configuration, &byte );
   const long before = allocations;
   for ( auto _ : state )
      if ( ham.read8( configuration, &byte ) != PL_STATUS_OK )
         state.SkipWithError( "the read failed" );
   state.counters["allocations/batch"] =
      static_cast<double>( allocations - before ) / static_cast<double>( state.iterations() );
}

// Only prepares and queues: the cost of a batch without the socket.
void PrepareAndQueue( benchmark::State &state ) {
   Ham::OrbisSmbusHam &ham = SimulatedServer::running().ham( 2, 73 );
   ham.prepare();
   ham.addRead8( 1 );
   const long before = allocations;
   for ( auto _ : state ) {
      ham.prepare();
      benchmark::DoNotOptimize( ham.addRead8( 1 ) );
   }
   state.counters["allocations/batch"] =
      static_cast<double>( allocations - before ) / static_cast<double>( state.iterations() );
}

} // namespace

BENCHMARK( ReadOverPingPong )
   ->ArgNames( { "placement", "mux" } )
   ->ArgsProduct( { { OneCore, Apart, Free }, { 0, 1 } } )
   ->Iterations( 15 )
   ->UseRealTime();
BENCHMARK( Read8 )->UseRealTime();
BENCHMARK( PrepareAndQueue );
