#include "SimulatedServer.h"

#include "OrbisGeneric/Drivers/DriverArgs.h"
#include "OrbisGeneric/LibraryInit.h"

#include <chrono>
#include <cstdlib>
#include <fmt/format.h>
#include <fstream>
#include <thread>
#include <unistd.h>

namespace {

std::string topology() {
   std::string text = R"([ { "type": "I2C", "ham": "OrbisSmbus", "bus": { "id": 0,
      "devices": [ { "did": 1, "address": { "address": 72 } },
                   { "did": 100, "driver": "PCA9548", "address": { "address": 112 } } ],
      "muxes": [ { "did": 100, "busses": [ { "id": 4, "devices": [
                   { "did": 2, "address": { "address": 73 } } ] } ] } ] } })";
   for ( int bus = 1; bus < 8; ++bus )
      text += fmt::format( R"(, {{ "type": "I2C", "ham": "OrbisSmbus", "bus": {{ "id": {},
         "devices": [ {{ "did": {}, "address": {{ "address": 72 }} }} ] }} }})",
                           bus, 10 + bus );
   return text + " ]";
}

std::string simulation() {
   std::string text = R"({ "seed": 1, "chips": [
      { "did": 1, "name": "near", "chip": "LM75", "temperature": 24.5 },
      { "did": 2, "name": "far", "chip": "LM75", "temperature": 31.0 },
      { "did": 100, "name": "mux", "chip": "PCA9548" })";
   for ( int bus = 1; bus < 8; ++bus )
      text +=
         fmt::format( R"(, {{ "did": {}, "name": "on-{}", "chip": "LM75", "temperature": 24.5 }})",
                      10 + bus, bus );
   return text + " ] }";
}

std::string newFolder() {
   char pattern[] = "/tmp/orbis-bench-XXXXXX";
   return mkdtemp( pattern );
}

} // namespace

SimulatedServer::SimulatedServer( std::vector<std::string> options )
   : options_( std::move( options ) ), folder_( newFolder() ), process_( [this] { run(); } ) {
   while ( access( path().c_str(), F_OK ) != 0 )
      std::this_thread::sleep_for( std::chrono::milliseconds( 10 ) );
}

SimulatedServer::~SimulatedServer() {
   for ( const char *file :
         { "/smbus.sock", "/smbus.sock.control", "/topology.json", "/simulation.json" } )
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
   std::ofstream( folder_ + "/topology.json" ) << topology();
   std::ofstream( folder_ + "/simulation.json" ) << simulation();
   std::vector<std::string> words{ ORBIS_SMBUSD,
                                   "--socket",
                                   path(),
                                   "--log-level",
                                   "error",
                                   "--simulate",
                                   folder_ + "/topology.json",
                                   "--simulation",
                                   folder_ + "/simulation.json" };
   words.insert( words.end(), options_.begin(), options_.end() );
   std::vector<char *> arguments;
   for ( std::string &word : words )
      arguments.push_back( word.data() );
   arguments.push_back( nullptr );
   execv( ORBIS_SMBUSD, arguments.data() );
}

SimulatedServer &SimulatedServer::running() {
   static SimulatedServer one;
   static const bool isConnected = [] {
      setenv( "ORBIS_SMBUS_SOCKET", one.path().c_str(), 1 );
      return orbisLibraryInit( "bench", topology().c_str(), 10 ) == PL_STATUS_OK;
   }();
   if ( !isConnected )
      abort();
   return one;
}
