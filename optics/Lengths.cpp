#include "optics/Lengths.h"

#include <algorithm>

namespace Optics {

void addLength( Module &module, const char *medium, std::optional<uint8_t> units, double metres ) {
   if ( units.value_or( 0 ) != 0 )
      module.lengths.push_back(
         { medium, std::min<unsigned>( *units, 254 ) * metres, *units == 255 } );
}

} // namespace Optics
