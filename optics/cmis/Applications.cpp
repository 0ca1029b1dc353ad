#include "optics/cmis/Cmis.h"
#include "optics/tables/Tables.h"

namespace Optics::Cmis {

namespace {

constexpr uint8_t endOfList = 0xFF;

// Four bytes each. CMIS, lower bytes 86 to 117 for 1 to 8, page 01h bytes 223 to 250 for 9 to 15.
std::optional<std::vector<uint8_t>> descriptorOf( const Image &image, unsigned number ) {
   return number <= 8 ? Half( image, lower ).bytes( 86 + 4 * ( number - 1 ), 4 )
                      : Half( image, page01 ).bytes( 223 + 4 * ( number - 9 ), 4 );
}

} // namespace

void decodeApplications( const Image &image, Module &module ) {
   const auto mediaType = Half( image, lower ).byte( 85 );
   const unsigned last = module.isFlat ? 8 : 15;
   for ( unsigned number = 1; mediaType && number <= last; ++number ) {
      const auto descriptor = descriptorOf( image, number );
      // Without this one it isn't known whether the list goes on.
      if ( !descriptor || ( *descriptor )[0] == endOfList )
         return;
      // Pages that are all zero have no list at all.
      if ( *descriptor == std::vector<uint8_t>( 4, 0 ) )
         return;
      Application application;
      application.number = number;
      application.host = hostInterfaceCode( ( *descriptor )[0] );
      application.media = mediaInterfaceCode( *mediaType, ( *descriptor )[1] );
      application.hostLanes = ( *descriptor )[2] >> 4;
      application.mediaLanes = ( *descriptor )[2] & 0x0F;
      application.hostStarts = ( *descriptor )[3];
      if ( !module.isFlat )
         application.mediaStarts = Half( image, page01 ).byte( 176 + number - 1 );
      module.applications.push_back( application );
   }
}

} // namespace Optics::Cmis
