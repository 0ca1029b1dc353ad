#include "optics/Parts.h"

#include "optics/Decode.h"
#include "optics/Half.h"
#include "optics/cmis/Cmis.h"
#include "optics/sff8472/Sff8472.h"
#include "optics/sff8636/Sff8636.h"

#include <fmt/format.h>

namespace Optics {

std::vector<Part> partsOf( const Image &image, Standard standard ) {
   switch ( standard ) {
   case Standard::Sff8472:
      return Sff8472::parts( image );
   case Standard::Sff8636:
      return Sff8636::parts( image );
   case Standard::Cmis:
      return Cmis::parts( image );
   }
   return {};
}

std::vector<std::string> missingParts( const Image &image, Standard standard ) {
   std::vector<std::string> findings;
   for ( const Part &part : partsOf( image, standard ) ) {
      const Block &block = part.block;
      unsigned read = 0;
      for ( unsigned i = 0; i < block.size; ++i )
         read += image.byte( block.region, block.first + i ).has_value();
      if ( read == block.size )
         continue;
      const std::string where =
         block.size == 1
            ? fmt::format( "byte {} of {}", block.first, nameOf( block.region, standard ) )
            : fmt::format( "the bytes {} to {} of {}", block.first, block.first + block.size - 1,
                           nameOf( block.region, standard ) );
      findings.push_back( read == 0
                             ? fmt::format( "{} {} not read: this leaves out {}", where,
                                            block.size == 1 ? "was" : "were", part.holds )
                             : fmt::format( "only {} of {} were read: this leaves out some of {}",
                                            read, where, part.holds ) );
   }
   return findings;
}

} // namespace Optics
