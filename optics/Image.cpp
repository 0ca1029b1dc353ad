#include "optics/Image.h"

#include <fmt/format.h>
#include <stdexcept>

namespace Optics {

namespace {

unsigned startOf( const Region &region ) { return region.upper ? 128 : 0; }

bool isInside( const Region &region, size_t first, size_t size ) {
   const unsigned start = startOf( region );
   return first >= start && first <= start + 128 && size <= start + 128 - first;
}

} // namespace

void Image::put( const Region &region, unsigned first, std::span<const uint8_t> bytes ) {
   const unsigned start = startOf( region );
   if ( !isInside( region, first, bytes.size() ) )
      throw std::out_of_range(
         fmt::format( "{} bytes from {} are not in {} to {}: that is all of a half of a memory",
                      bytes.size(), first, start, start + 127 ) );
   Bytes &into = regions_[region];
   for ( size_t i = 0; i < bytes.size(); ++i )
      into[first - start + i] = bytes[i];
}

std::optional<uint8_t> Image::byte( const Region &region, unsigned number ) const {
   const auto found = regions_.find( region );
   if ( found == regions_.end() || !isInside( region, number, 1 ) )
      return {};
   return found->second[number - startOf( region )];
}

bool Image::has( const Block &block ) const {
   for ( unsigned i = 0; i < block.size; ++i )
      if ( !byte( block.region, block.first + i ) )
         return false;
   return true;
}

std::vector<Image::Run> Image::runs() const {
   std::vector<Run> runs;
   for ( const auto &[region, bytes] : regions_ ) {
      bool isNew = true;
      for ( size_t i = 0; i < bytes.size(); ++i ) {
         if ( bytes[i] && isNew )
            runs.push_back( { region, startOf( region ) + static_cast<unsigned>( i ), {} } );
         if ( bytes[i] )
            runs.back().bytes.push_back( *bytes[i] );
         isNew = !bytes[i];
      }
   }
   return runs;
}

} // namespace Optics
