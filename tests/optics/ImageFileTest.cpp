#include "Images.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace OpticsTest {

namespace {

using namespace Optics;
using ::testing::HasSubstr;
using ::testing::ThrowsMessage;

TEST( ImageFileTest, HasTheRegionsOfItsStandardInTheirOrder ) {
   Bytes file( 768 );
   for ( size_t i = 0; i < file.size(); ++i )
      file[i] = static_cast<uint8_t>( i / 128 );
   const Image cmis = imageOfFile( file, Standard::Cmis );
   const Region regions[] = { { 0x50 },
                              { 0x50, true, 0, 0x00 },
                              { 0x50, true, 0, 0x01 },
                              { 0x50, true, 0, 0x02 },
                              { 0x50, true, 0, 0x10 },
                              { 0x50, true, 0, 0x11 } };
   for ( unsigned i = 0; i < 6; ++i )
      EXPECT_EQ( cmis.byte( regions[i], regions[i].upper ? 255 : 127 ), i );

   const Image qsfp = imageOfFile( std::span( file ).first( 640 ), Standard::Sff8636 );
   EXPECT_EQ( qsfp.byte( { 0x50, true, 0, 0x03 }, 128 ), 4 );
   const Image sfp = imageOfFile( std::span( file ).first( 512 ), Standard::Sff8472 );
   EXPECT_EQ( sfp.byte( { 0x51 }, 0 ), 2 );
   EXPECT_EQ( sfp.byte( { 0x51, true }, 255 ), 3 );
}

TEST( ImageFileTest, ComesBackFromItsImage ) {
   EXPECT_EQ( fileOfImage( imageOfFile( sfp(), {} ), Standard::Sff8472 ), sfp() );
   EXPECT_EQ( fileOfImage( imageOfFile( qsfp(), {} ), Standard::Sff8636 ), qsfp() );
   EXPECT_EQ( fileOfImage( imageOfFile( qsfpDd(), {} ), Standard::Cmis ), qsfpDd() );
}

TEST( ImageFileTest, EndsWithTheLastRegionThatWasRead ) {
   Image image;
   EXPECT_EQ( fileOfImage( image, Standard::Sff8636 ).size(), 0u );
   image.put( { 0x50 }, 0, Bytes{ 0x11 } );
   EXPECT_EQ( fileOfImage( image, Standard::Sff8636 ).size(), 128u );
   image.put( { 0x50, true, 0, 0x03 }, 200, Bytes{ 0x22 } );
   const std::vector<uint8_t> file = fileOfImage( image, Standard::Sff8636 );
   ASSERT_EQ( file.size(), 640u );
   EXPECT_EQ( file[0], 0x11 );
   EXPECT_EQ( file[1], 0 );
   EXPECT_EQ( file[page03OfQsfp + 200], 0x22 );
}

TEST( ImageFileTest, IsAnImageThatIsCutIfItIsCut ) {
   const Bytes file = sfp();
   const Image image = imageOfFile( std::span( file ).first( 300 ), {} );
   EXPECT_TRUE( image.has( { { 0x51 }, 0, 44 } ) );
   EXPECT_FALSE( image.has( { { 0x51 }, 0, 45 } ) );
   EXPECT_EQ( imageOfFile( {}, Standard::Cmis ).regions().size(), 0u );
}

TEST( ImageFileTest, TellsWhatIsWrongWithAFile ) {
   const auto read = []( Bytes file, std::optional<Standard> standard ) {
      return [=] { imageOfFile( file, standard ); };
   };
   EXPECT_THAT( read( {}, {} ), ThrowsMessage<std::runtime_error>( HasSubstr( "is empty" ) ) );
   EXPECT_THAT( read( { 0x06 }, {} ), ThrowsMessage<std::runtime_error>( HasSubstr( "06h" ) ) );
   EXPECT_THAT( read( Bytes( 641, 0x11 ), {} ),
                ThrowsMessage<std::runtime_error>( HasSubstr( "641 bytes" ) ) );
   EXPECT_THAT( read( Bytes( 513 ), Standard::Sff8472 ),
                ThrowsMessage<std::runtime_error>( HasSubstr( "at most 512" ) ) );
}

} // namespace

} // namespace OpticsTest
