#include "optics/ReadPlan.h"

#include "optics/Decode.h"
#include "optics/Parts.h"

namespace Optics {

namespace {

// What every module has, and what tells the rest: the identifier, the revision and, but for an SFP,
// whether the memory is flat.
const Block firstBlock{ { 0x50 }, 0, 3 };

// Without the pairs of bytes in front that are read already. Words are at even places and stay
// whole.
Block missingOf( const Image &image, Block block ) {
   while ( block.size > 2 && image.has( { block.region, block.first, 2 } ) ) {
      block.first += 2;
      block.size -= 2;
   }
   return block;
}

} // namespace

std::vector<Block> identityBlocks( const Image &image ) {
   if ( !image.has( firstBlock ) )
      return { firstBlock };
   const auto standard = standardOf( image );
   if ( !standard )
      return {};
   std::vector<Block> blocks;
   for ( const Part &part : partsOf( image, *standard ) )
      if ( part.kind == Part::Kind::Identity && !image.has( part.block ) )
         blocks.push_back( missingOf( image, part.block ) );
   return blocks;
}

std::vector<Block> liveBlocks( const Image &image ) {
   std::vector<Block> blocks;
   const auto standard = standardOf( image );
   if ( !standard )
      return blocks;
   for ( const Part &part : partsOf( image, *standard ) )
      if ( part.kind == Part::Kind::Live )
         blocks.push_back( part.block );
   return blocks;
}

} // namespace Optics
