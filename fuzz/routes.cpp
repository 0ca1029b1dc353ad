// What carries each root bus: routes.json.
#include "boardfiles/RoutesFile.h"
#include "fuzz/Expect.h"
#include "fuzz/MemoryFile.h"

#include <set>
#include <string>

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size ) {
   try {
      const BoardFiles::RoutesFile file = BoardFiles::loadRoutes( Fuzz::fileOf( data, size ) );
      std::set<std::string> busses;
      for ( const BoardFiles::Route &route : file.routes )
         Fuzz::expect( busses.insert( toString( route.bus ) ).second, "a bus has one route" );
   } catch ( const BoardFiles::BoardError &error ) {
      Fuzz::expect( *error.what() != '\0', "a refusal has its reason" );
   }
   return 0;
}
