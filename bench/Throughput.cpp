// What more requests, more clients and real wires cost.
#include "Client.h"
#include "Measuring.h"
#include "SimulatedServer.h"

#include <atomic>
#include <benchmark/benchmark.h>
#include <memory>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

double now() { return secondsOf( CLOCK_MONOTONIC ); }

// The lowest of some rounds, in which nothing else ran.
template <typename Call>
double secondsFor( Call call ) {
   constexpr int rounds = 15, calls = 20;
   double least = 1e9;
   for ( int round = 0; round < rounds; ++round ) {
      const double begun = now();
      for ( int i = 0; i < calls; ++i )
         call();
      least = std::min( least, ( now() - begun ) / calls );
   }
   return least;
}

void runBatch( Ham::OrbisSmbusHam &ham, long requests ) {
   ham.prepare();
   for ( long i = 0; i < requests; ++i )
      ham.addRead8( configuration );
   if ( ham.execute() != PL_STATUS_OK )
      abort();
}

// Both messages of the last batch, once there and back, each made anew.
double encodeAndDecode( const Ham::OrbisSmbusHam &ham ) {
   return secondsFor( [&] {
      const Smbus::TransactionRequest sent( ham.request_ );
      Smbus::TransactionRequest request;
      request.ParseFromString( sent.SerializeAsString() );
      const Smbus::TransactionResponse answered( ham.response_ );
      Smbus::TransactionResponse response;
      response.ParseFromString( answered.SerializeAsString() );
   } );
}

// From one request to so many: what each costs, as a multiple of its encoding and decoding.
void MoreInABatch( benchmark::State &state ) {
   SimulatedServer &server = SimulatedServer::running();
   Ham::OrbisSmbusHam &ham = server.ham( 1, 72 );
   runBatch( ham, 1 );
   place( OneCore, server.process() );
   const auto more = static_cast<double>( state.range( 0 ) - 1 );
   for ( auto _ : state ) {
      const double one = secondsFor( [&] { runBatch( ham, 1 ); } );
      const double coded = encodeAndDecode( ham );
      const double many = secondsFor( [&] { runBatch( ham, state.range( 0 ) ); } );
      const double manyCoded = encodeAndDecode( ham );
      state.counters["ratio"] = ( many - one ) / ( manyCoded - coded );
      state.counters["us_each"] = ( many - one ) / more * 1e6;
   }
   place( Free, server.process() );
}

// Readings in a second, of so many clients on a bus each.
double readingsPerSecond( const SimulatedServer &server, unsigned clients ) {
   std::vector<std::unique_ptr<Client>> all;
   for ( unsigned bus = 0; bus < clients; ++bus )
      all.push_back( std::make_unique<Client>( server.path(), bus ) );
   std::atomic<bool> ends = false;
   std::atomic<long> readings = 0;
   std::vector<std::thread> threads;
   const double begun = now();
   for ( const auto &client : all )
      threads.emplace_back( [&] {
         long count = 0;
         for ( ; !ends; ++count )
            client->read();
         readings += count;
      } );
   std::this_thread::sleep_for( std::chrono::milliseconds( 200 ) );
   ends = true;
   for ( std::thread &thread : threads )
      thread.join();
   return static_cast<double>( readings ) / ( now() - begun );
}

void EightBussesOverOne( benchmark::State &state ) {
   SimulatedServer server;
   std::vector<double> ratios;
   for ( auto _ : state ) {
      place( Free, server.process() );
      const double eight = readingsPerSecond( server, 8 );
      place( OneCore, server.process() ); // where one client is served best
      ratios.push_back( eight / readingsPerSecond( server, 1 ) );
   }
   place( Free, getpid() );
   state.counters["ratio"] = median( ratios );
}

// On a bus that is as slow as real wires: the share of the time in which nothing passes on them.
void NotOnTheWires( benchmark::State &state ) {
   SimulatedServer server( { "--wire-time" } );
   Client client( server.path(), 0 );
   client.read();
   place( OneCore, server.process() );
   constexpr double wires = ( 2 + 9 * 5 + 1 ) / 100e3; // S addr cmd Sr addr data data P at 100 kHz
   std::vector<double> shares;
   for ( auto _ : state ) {
      constexpr int calls = 200;
      const double begun = now();
      for ( int i = 0; i < calls; ++i )
         client.read();
      shares.push_back( 1 - wires * calls / ( now() - begun ) );
   }
   place( Free, getpid() );
   state.counters["share"] = median( shares );
}

} // namespace

BENCHMARK( MoreInABatch )
   ->ArgName( "requests" )
   ->Arg( 2 )
   ->Arg( 10 )
   ->Arg( 100 )
   ->Arg( 1000 )
   ->Iterations( 1 );
BENCHMARK( EightBussesOverOne )->Iterations( 5 )->UseRealTime();
BENCHMARK( NotOnTheWires )->Iterations( 15 )->UseRealTime();
