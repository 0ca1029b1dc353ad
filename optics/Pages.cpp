#include "optics/Pages.h"

#include "optics/Decode.h"

namespace Optics {

// Byte 2: bit 2 of SFF-8636 and bit 7 of CMIS say that there is only page 00h.
bool hasPages( const Image &image ) {
   const auto standard = standardOf( image );
   const auto memory = image.byte( {}, 2 );
   if ( !standard || !memory || standard == Standard::Sff8472 )
      return false;
   return !( *memory & ( standard == Standard::Cmis ? 0x80 : 0x04 ) );
}

} // namespace Optics
