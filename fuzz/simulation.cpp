// What the chips of a board hold: simulation.json. What its check accepts makes a board.
#include "boardfiles/SimulationFile.h"
#include "boardfiles/TopologyFile.h"
#include "fuzz/Findings.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/SmallBoard.h"
#include "simulator/board/SimulatedBoard.h"

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size ) {
   static const std::string wiring = Fuzz::smallTopology;
   static const auto topology = BoardFiles::loadTopology( wiring );
   static const Fuzz::NoTime clock;
   const std::string &path = Fuzz::fileOf( data, size );
   BoardFiles::Findings findings;
   const auto simulation = BoardFiles::readSimulation( path, findings );
   if ( simulation )
      checkSimulation( *simulation, *topology, findings );
   Fuzz::checkFindings( findings );
   if ( !simulation || hasErrors( findings ) )
      return 0;
   try {
      Simulator::SimulatedBoard board( wiring, path, clock );
      for ( const auto &[id, bus] : board.busses() )
         bus->transfer( { .address = 0x48, .length = 2 } );
   } catch ( const BoardFiles::BoardError &error ) { // as a text that a chip has no room for
      Fuzz::expect( *error.what() != '\0', "a refusal has its reason" );
   }
   return 0;
}
