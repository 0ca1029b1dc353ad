// The lines of a scenario. Each is understood, or refused with its line.
#include "fuzz/Expect.h"
#include "fuzz/MemoryFile.h"
#include "orbis-smbus/Failures.h"
#include "orbis-smbus/Scenario.h"

#include <algorithm>

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size ) {
   const std::string &path = Fuzz::fileOf( data, size );
   try {
      SmbusClient::Scenario scenario( path );
   } catch ( const SmbusClient::Failed &failed ) {
      Fuzz::expect( std::string_view( failed.what() ).starts_with( path + ":" ),
                    "a refusal names file and line" );
   }
   return 0;
}
