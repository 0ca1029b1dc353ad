// Where a board's objects are on its box: panel.json.
#include "boardfiles/PanelFile.h"
#include "fuzz/Findings.h"
#include "fuzz/MemoryFile.h"

#include <set>

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size ) {
   static const std::vector<std::string> objects{ "system-led", "qsfp1", "qsfp2", "sfp1",
                                                  "psu1",       "fan1",  "fan2",  "temp-front" };
   BoardFiles::Findings findings;
   const BoardFiles::Panel panel =
      BoardFiles::readPanel( Fuzz::fileOf( data, size ), objects, findings );
   Fuzz::checkFindings( findings );
   if ( hasErrors( findings ) )
      return 0;
   std::set<std::string> placed;
   for ( const BoardFiles::PanelSide &side : panel )
      for ( const BoardFiles::PanelPlace &place : side.places )
         Fuzz::expect( placed.insert( place.object ).second, "an object has one place" );
   return 0;
}
