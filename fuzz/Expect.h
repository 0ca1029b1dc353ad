// What a target says of an input that breaks its rule.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace Fuzz {

inline void expect( bool holds, const char *rule ) {
   if ( holds )
      return;
   std::fprintf( stderr, "this doesn't hold: %s\n", rule );
   std::abort();
}

} // namespace Fuzz
