// The names of registers: registers.json.
#include "boardfiles/RegistersFile.h"
#include "fuzz/Findings.h"
#include "fuzz/MemoryFile.h"

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size ) {
   BoardFiles::Findings findings;
   static const auto drivers =
      BoardFiles::readDriverTable( "boards/libOrbisDriversKelt.drivers.json", findings );
   const auto registers =
      BoardFiles::readRegisters( Fuzz::fileOf( data, size ), drivers.value(), findings );
   Fuzz::checkFindings( findings );
   if ( !hasErrors( findings ) )
      for ( const auto &[driver, list] : registers )
         Fuzz::expect( drivers->drivers.contains( driver ), "registers are those of a driver" );
   return 0;
}
