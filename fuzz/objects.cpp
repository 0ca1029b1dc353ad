// A board's objects with their device documents: objects.json. What the check accepts never ends
// the plug-in, and makes every object.
#include "fuzz/MemoryFile.h"
#include "fuzz/PluginHost.h"

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size ) {
   static const std::string topology = "tests/boardfiles/kelt/topology.json";
   if ( const auto board = Fuzz::checkBoard( topology, Fuzz::fileOf( data, size ) ) )
      Fuzz::addAll( *board );
   return 0;
}
