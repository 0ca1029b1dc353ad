#include "optics/Half.h"

#include "optics/Text.h"

#include <bit>
#include <fmt/format.h>

namespace Optics {

Half::Half( const Image &image, const Region &region ) : start_( region.upper ? 128 : 0 ) {
   const auto found = image.regions().find( region );
   bytes_ = found == image.regions().end() ? nullptr : &found->second;
}

std::optional<uint8_t> Half::byte( unsigned number ) const {
   const bool isHere = bytes_ && number >= start_ && number - start_ < bytes_->size();
   return isHere ? ( *bytes_ )[number - start_] : std::nullopt;
}

std::optional<uint8_t> Half::bits( unsigned number, unsigned high, unsigned low ) const {
   const auto all = byte( number );
   if ( !all )
      return {};
   return static_cast<uint8_t>( *all >> low & ( ( 1u << ( high - low + 1 ) ) - 1 ) );
}

std::optional<bool> Half::bit( unsigned number, unsigned bit ) const {
   const auto found = bits( number, bit, bit );
   return found ? std::optional( *found != 0 ) : std::nullopt;
}

std::optional<uint16_t> Half::word( unsigned first ) const {
   const auto both = bytes( first, 2 );
   if ( !both )
      return {};
   return static_cast<uint16_t>( ( *both )[0] << 8 | ( *both )[1] );
}

std::optional<float> Half::real( unsigned first ) const {
   const auto high = word( first );
   const auto low = word( first + 2 );
   if ( !high || !low )
      return {};
   return std::bit_cast<float>( uint32_t{ *high } << 16 | *low );
}

std::optional<std::vector<uint8_t>> Half::bytes( unsigned first, unsigned size ) const {
   std::vector<uint8_t> all;
   for ( unsigned i = 0; i < size; ++i ) {
      const auto one = byte( first + i );
      if ( !one )
         return {};
      all.push_back( *one );
   }
   return all;
}

std::string Half::text( unsigned first, unsigned size ) const {
   const auto all = bytes( first, size );
   return all ? escapedText( *all ) : "";
}

std::string nameOf( const Region &region, Standard standard ) {
   if ( standard == Standard::Sff8472 )
      return region.address == 0x50 ? "A0h" : "A2h";
   return region.upper ? fmt::format( "page {:02x}h", region.page ) : "the lower half";
}

} // namespace Optics
