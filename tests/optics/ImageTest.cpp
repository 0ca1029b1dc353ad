// What is known of a memory of which a part was read.
#include "optics/Image.h"

#include <gmock/gmock.h>

namespace {

using Optics::Image;
using Optics::Region;
using ::testing::ElementsAre;

TEST( ImageTest, GivesWhatWasReadInRuns ) {
   Image image;
   const std::vector<uint8_t> bytes{ 1, 2 };
   image.put( {}, 126, bytes );
   image.put( {}, 0, bytes );
   image.put( {}, 2, bytes );
   image.put( { 0x50, true, 0, 3 }, 128, bytes );
   image.put( { 0x50, true, 0, 3 }, 254, bytes );
   std::vector<std::pair<unsigned, size_t>> runs;
   for ( const Image::Run &run : image.runs() )
      runs.emplace_back( run.first, run.bytes.size() );
   EXPECT_THAT( runs, ElementsAre( std::pair( 0, 4 ), std::pair( 126, 2 ), std::pair( 128, 2 ),
                                   std::pair( 254, 2 ) ) );
   Image again;
   for ( const Image::Run &run : image.runs() )
      again.put( run.region, run.first, run.bytes );
   EXPECT_EQ( again.regions(), image.regions() );
}

} // namespace
