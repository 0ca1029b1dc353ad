// What every reader of a board's files has to hold.
#pragma once

#include "boardfiles/Finding.h"
#include "fuzz/Expect.h"

namespace Fuzz {

inline void checkFindings( const BoardFiles::Findings &findings ) {
   for ( const BoardFiles::Finding &finding : findings ) {
      expect( !finding.reason.empty(), "a finding has its reason" );
      expect( !toText( finding ).empty(), "a finding has a text" );
   }
   expect( toJson( findings ).starts_with( "[" ), "findings have a JSON text" );
}

} // namespace Fuzz
