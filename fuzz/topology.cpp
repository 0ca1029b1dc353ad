// A board's wiring: topology.json. What the check accepts never ends the plug-in: a few objects on
// it can be made.
#include "fuzz/MemoryFile.h"
#include "fuzz/PluginHost.h"
#include "fuzz/SmallBoard.h"

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size ) {
   if ( const auto board = Fuzz::checkBoard( Fuzz::fileOf( data, size ), Fuzz::smallObjects ) )
      Fuzz::addAll( *board );
   return 0;
}
