#include "RandomImages.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace OpticsTest {

namespace {

using ::testing::IsEmpty;
using ::testing::Not;

// ORBIS_OPTICS_IMAGES makes it a long run; ORBIS_OPTICS_FIRST lets several share the work.
uint64_t numberIn( const char *variable, uint64_t otherwise ) {
   const char *text = std::getenv( variable );
   return text ? std::strtoull( text, nullptr, 10 ) : otherwise;
}

TEST( RandomImagesTest, SayOnlyWhatTheirBytesSay ) {
   const uint64_t first = numberIn( "ORBIS_OPTICS_FIRST", 0 );
   const uint64_t count = numberIn( "ORBIS_OPTICS_IMAGES", 2000 );
   for ( uint64_t number = first; number < first + count; ++number )
      ASSERT_THAT( wrongIn( randomImage( number ) ), IsEmpty() ) << "image " << number;
}

TEST( RandomImagesTest, AreOfAllKinds ) {
   unsigned standards[3] = {};
   unsigned withMonitors = 0, withValues = 0, whole = 0;
   for ( uint64_t number = 0; number < 300; ++number ) {
      const RandomImage image = randomImage( number );
      ++standards[static_cast<size_t>( image.standard )];
      const Optics::Module module = decode( image.some, image.standard );
      withMonitors += !module.monitors.empty();
      for ( const Optics::Monitor &monitor : module.monitors )
         withValues += monitor.value.has_value();
      whole += module.findings.empty();
   }
   for ( const unsigned count : standards )
      EXPECT_GT( count, 60u );
   EXPECT_GT( withMonitors, 60u );
   EXPECT_GT( withValues, 400u );
   EXPECT_LT( whole, 60u );
}

TEST( RandomImagesTest, WouldShowAFactThatOtherBytesContradict ) {
   RandomImage image = randomImage( 1 );
   for ( const auto &[region, bytes] : image.all.regions() )
      image.some.put( region, region.upper ? 140 : 20, std::array<uint8_t, 4>{ 1, 2, 3, 4 } );
   EXPECT_THAT( wrongIn( image ), Not( IsEmpty() ) );
}

} // namespace

} // namespace OpticsTest
