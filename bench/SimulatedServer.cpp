#include "SimulatedServer.h"

#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/LibraryInit.h"

#include <cstdlib>
#include <fstream>
#include <unistd.h>

namespace {

const char *const topology = R"([ { "type": "I2C", "ham": "OrbisSmbus", "bus": { "id": 0,
   "devices": [ { "did": 1, "address": { "address": 72 } },
                { "did": 100, "driver": "PCA9548", "address": { "address": 112 } } ],
   "muxes": [ { "did": 100, "busses": [ { "id": 4, "devices": [
                { "did": 2, "address": { "address": 73 } } ] } ] } ] } } ])";
const char *const simulation = R"({ "seed": 1, "chips": [
   { "did": 1, "name": "near", "chip": "LM75", "temperature": 24.5 },
   { "did": 2, "name": "far", "chip": "LM75", "temperature": 31.0 },
   { "did": 100, "name": "mux", "chip": "PCA9548" } ] })";

std::string newFolder() {
   char pattern[] = "/tmp/orbis-bench-XXXXXX";
   return mkdtemp( pattern );
}

} // namespace

SimulatedServer::SimulatedServer() : folder_( newFolder() ), process_( [this] { run(); } ) {
   setenv( "ORBIS_SMBUS_SOCKET", ( folder_ + "/smbus.sock" ).c_str(), 1 );
   if ( orbisLibraryInit( "bench", topology, 10 ) != PL_STATUS_OK )
      abort();
}

SimulatedServer::~SimulatedServer() {
   for ( const char *file : { "/smbus.sock", "/topology.json", "/simulation.json" } )
      unlink( ( folder_ + file ).c_str() );
   rmdir( folder_.c_str() );
}

Ham::OrbisSmbusHam &SimulatedServer::ham( unsigned did, unsigned address ) {
   Drivers::DriverArgs args;
   args.did = did;
   args.uid = Drivers::noComponent;
   args.address.address = address & 0x7F;
   return static_cast<Ham::OrbisSmbusHam &>( *Ham::createHam( args ) );
}

void SimulatedServer::run() {
   std::ofstream( folder_ + "/topology.json" ) << topology;
   std::ofstream( folder_ + "/simulation.json" ) << simulation;
   execl( ORBIS_SMBUSD, ORBIS_SMBUSD, "--socket", ( folder_ + "/smbus.sock" ).c_str(),
          "--log-level", "error", "--simulate", ( folder_ + "/topology.json" ).c_str(),
          "--simulation", ( folder_ + "/simulation.json" ).c_str(), nullptr );
}

SimulatedServer &SimulatedServer::running() {
   static SimulatedServer one;
   return one;
}
