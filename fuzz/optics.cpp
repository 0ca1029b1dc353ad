// A libFuzzer target for the decoder of module memories. The first byte chooses the standard, the
// two behind it how many of the following bytes were read. Of one input in sixteen, what is said of
// the part is compared with what is said of the whole, which is slow.
#include "optics/Decode.h"
#include "optics/ImageFile.h"
#include "optics/ReadPlan.h"
#include "tests/optics/RandomImages.h"

#include <algorithm>
#include <cstdlib>
#include <fmt/format.h>
#include <numeric>

namespace {

std::span<const uint8_t> atMost( std::span<const uint8_t> bytes, size_t size ) {
   return bytes.first( std::min( bytes.size(), size ) );
}

size_t sizeOf( Optics::Standard standard ) {
   switch ( standard ) {
   case Optics::Standard::Sff8472:
      return 512;
   case Optics::Standard::Sff8636:
      return 640;
   case Optics::Standard::Cmis:
      return 768;
   }
   return 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput( const uint8_t *data, size_t size ) {
   if ( size < 3 )
      return 0;
   const auto standard = static_cast<Optics::Standard>( data[0] % 3 );
   const size_t length = data[1] << 8 | data[2];
   const std::span file = atMost( std::span( data, size ).subspan( 3 ), sizeOf( standard ) );
   const OpticsTest::RandomImage image{ standard,
                                        Optics::imageOfFile( atMost( file, length ), standard ),
                                        Optics::imageOfFile( file, standard ) };
   if ( std::accumulate( data, data + size, 0u ) % 64 == 0 ) {
      for ( const std::string &wrong : wrongIn( image ) ) {
         fmt::print( stderr, "{}\n", wrong );
         std::abort();
      }
   } else {
      decode( image.some, standard );
      identityBlocks( image.some );
      liveBlocks( image.some );
   }
   return 0;
}
