// A board's wiring: topology.json. What the check accepts never ends the plug-in: a few objects on
// it can be made.
#include "fuzz/MemoryFile.h"
#include "fuzz/PluginHost.h"
#include "fuzz/SmallBoard.h"

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size ) {
   BoardFiles::Findings findings;
   static const auto objects = BoardFiles::readObjects( Fuzz::smallObjects, findings ).value();
   const auto topology = BoardFiles::readTopology( Fuzz::fileOf( data, size ), findings );
   if ( topology && Fuzz::accepts( *topology, objects, findings ) )
      Fuzz::addAll( *topology, objects );
   return 0;
}
