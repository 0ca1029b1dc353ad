// A board's objects with their device documents: objects.json. What the check accepts never ends
// the plug-in, and makes every object.
#include "fuzz/MemoryFile.h"
#include "fuzz/PluginHost.h"

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size ) {
   static const auto topology = BoardFiles::loadTopology( "tests/boardfiles/kelt/topology.json" );
   BoardFiles::Findings findings;
   const auto objects = BoardFiles::readObjects( Fuzz::fileOf( data, size ), findings );
   if ( objects && Fuzz::accepts( *topology, *objects, findings ) )
      Fuzz::addAll( *topology, *objects );
   return 0;
}
