// The time of one register read, from the call of the driver to its answer. For comparison: the
// same number of bytes sent and returned over the same kind of socket. The difference is the cost
// of plug-in, messages and server.
#include "ChildProcess.h"

#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/Ham/OrbisSmbusHam.h"
#include "OrbisGeneric/LibraryInit.h"

#include <benchmark/benchmark.h>

#include <fstream>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

extern long allocations; // of this process so far, in CountingAllocator.cpp

namespace {

// One thermometer on the root bus, and one below a mux.
const char *const topology = R"([ { "type": "I2C", "ham": "OrbisSmbus", "bus": { "id": 0,
   "devices": [ { "did": 1, "address": { "address": 72 } },
                { "did": 100, "driver": "PCA9548", "address": { "address": 112 } } ],
   "muxes": [ { "did": 100, "busses": [ { "id": 4, "devices": [
                { "did": 2, "address": { "address": 73 } } ] } ] } ] } } ])";
const char *const simulation = R"({ "seed": 1, "chips": [
   { "did": 1, "name": "near", "chip": "LM75", "temperature": 24.5 },
   { "did": 2, "name": "far", "chip": "LM75", "temperature": 31.0 },
   { "did": 100, "name": "mux", "chip": "PCA9548" } ] })";

class SimulatedServer {
 public:
   SimulatedServer() : process_( [this] { run(); } ) {
      setenv( "ORBIS_SMBUS_SOCKET", ( folder_ + "/smbus.sock" ).c_str(), 1 );
      if ( orbisLibraryInit( "bench", topology, 10 ) != PL_STATUS_OK )
         abort();
   }
   ~SimulatedServer() {
      for ( const char *file : { "/smbus.sock", "/topology.json", "/simulation.json" } )
         unlink( ( folder_ + file ).c_str() );
      rmdir( folder_.c_str() );
   }
   // The access method for a device of the topology.
   Ham::OrbisSmbusHam &ham( unsigned did, unsigned address ) {
      Drivers::DriverArgs args;
      args.did = did;
      args.uid = Drivers::noComponent;
      args.address.address = address & 0x7F;
      return static_cast<Ham::OrbisSmbusHam &>( *Ham::createHam( args ) );
   }

 private:
   void run() {
      std::ofstream( folder_ + "/topology.json" ) << topology;
      std::ofstream( folder_ + "/simulation.json" ) << simulation;
      execl( ORBIS_SMBUSD, ORBIS_SMBUSD, "--socket", ( folder_ + "/smbus.sock" ).c_str(),
             "--log-level", "error", "--simulate", ( folder_ + "/topology.json" ).c_str(),
             "--simulation", ( folder_ + "/simulation.json" ).c_str(), nullptr );
   }
   static std::string newFolder() {
      char pattern[] = "/tmp/orbis-bench-XXXXXX";
      return mkdtemp( pattern );
   }
   std::string folder_ = newFolder();
   ChildProcess process_;
};

SimulatedServer &server() {
   static SimulatedServer running;
   return running;
}

void readRegister( benchmark::State &state, Ham::OrbisSmbusHam &ham ) {
   constexpr unsigned configuration = 1; // the LM75's only register with one byte
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

void Read8( benchmark::State &state ) { readRegister( state, server().ham( 1, 72 ) ); }
void Read8BehindAMux( benchmark::State &state ) { readRegister( state, server().ham( 2, 73 ) ); }

void transfer( ssize_t ( *call )( int, void *, size_t ), int fd, std::vector<char> &bytes ) {
   for ( size_t done = 0; done < bytes.size(); ) {
      const ssize_t n = call( fd, bytes.data() + done, bytes.size() - done );
      if ( n <= 0 )
         _exit( 0 );
      done += static_cast<size_t>( n );
   }
}

ssize_t writeBytes( int fd, void *bytes, size_t size ) { return write( fd, bytes, size ); }

// The same number of bytes each way as the framed messages of Read8.
void BarePingPong( benchmark::State &state ) {
   Ham::OrbisSmbusHam &ham = server().ham( 1, 72 );
   uint8_t byte;
   ham.read8( 1, &byte );
   std::vector<char> ping( ham.request_.ByteSizeLong() + 1 ),
      pong( ham.response_.ByteSizeLong() + 1 );
   int ends[2];
   if ( socketpair( AF_UNIX, SOCK_STREAM, 0, ends ) != 0 )
      abort();
   ChildProcess echo( [&] {
      close( ends[0] );
      for ( ;; ) {
         transfer( read, ends[1], ping );
         transfer( writeBytes, ends[1], pong );
      }
   } );
   for ( auto _ : state ) {
      transfer( writeBytes, ends[0], ping );
      transfer( read, ends[0], pong );
   }
   state.counters["bytes"] = static_cast<double>( ping.size() + pong.size() );
   close( ends[0] );
   close( ends[1] );
}

// Only prepares and queues: the cost of a batch without the socket.
void PrepareAndQueue( benchmark::State &state ) {
   Ham::OrbisSmbusHam &ham = server().ham( 2, 73 );
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

BENCHMARK( BarePingPong )->UseRealTime();
BENCHMARK( Read8 )->UseRealTime();
BENCHMARK( Read8BehindAMux )->UseRealTime();
BENCHMARK( PrepareAndQueue );
