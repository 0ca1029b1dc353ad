#include "optics/cmis/Cmis.h"

namespace Optics::Cmis {

// CMIS, page 00h byte 210: the lanes that are not there.
std::optional<uint8_t> mediaLanes( const Image &image ) {
   const auto missing = Half( image, page00 ).byte( 210 );
   return missing ? std::optional( static_cast<uint8_t>( ~*missing ) ) : std::nullopt;
}

uint8_t hostLanes( const Image &image ) {
   Module module;
   module.isFlat = false;
   decodeApplications( image, module );
   unsigned lanes = 0;
   for ( const Application &application : module.applications )
      for ( unsigned start = 0; start < laneCount; ++start )
         if ( application.hostStarts >> start & 1 )
            lanes |= ( ( 1u << application.hostLanes ) - 1 ) << start;
   return static_cast<uint8_t>( lanes );
}

} // namespace Optics::Cmis
