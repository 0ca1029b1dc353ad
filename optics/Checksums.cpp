#include "optics/Checksums.h"

#include <fmt/format.h>
#include <numeric>

namespace Optics {

void addChecksum( Module &module, const Half &half, const ChecksumPlace &place ) {
   const auto covered = half.bytes( place.first, place.last - place.first + 1 );
   const auto found = half.byte( place.place );
   if ( !covered || !found )
      return;
   const auto computed =
      static_cast<uint8_t>( std::accumulate( covered->begin(), covered->end(), 0u ) );
   const Checksum &checksum =
      module.checksums.emplace_back( Checksum{ place.name, *found, computed, place.covers } );
   if ( !checksum.isRight() )
      module.findings.push_back(
         fmt::format( "the checksum {} is {:02X}h, and the bytes {} to {} add up to {:02X}h: {} "
                      "may be wrong",
                      place.name, *found, place.first, place.last, computed, place.covers ) );
}

} // namespace Optics
