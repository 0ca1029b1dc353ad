#include "optics/ReadPlan.h"

#include "Images.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace OpticsTest {

namespace {

using namespace Optics;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

const Region lower{ 0x50 };
const Region diagnostics{ 0x51 };
Region page( uint8_t number ) { return { 0x50, true, 0, number }; }

void copy( const Image &from, const std::vector<Block> &blocks, Image &into ) {
   for ( const Block &block : blocks )
      for ( unsigned i = 0; i < block.size; ++i )
         into.put( block.region, block.first + i,
                   std::array{ from.byte( block.region, block.first + i ).value() } );
}

// What is asked of a module, question by question.
std::vector<std::vector<Block>> questions( const Bytes &file, Image &image ) {
   const Image module = imageOfFile( file, {} );
   std::vector<std::vector<Block>> all;
   for ( std::vector<Block> blocks; !( blocks = identityBlocks( image ) ).empty(); ) {
      all.push_back( blocks );
      copy( module, blocks, image );
   }
   return all;
}

std::vector<std::vector<Block>> questions( const Bytes &file ) {
   Image image;
   return questions( file, image );
}

std::vector<Block> live( const Bytes &file ) {
   Image image;
   questions( file, image );
   return liveBlocks( image );
}

TEST( ReadPlanTest, AsksWhatItIsAndThenTheRest ) {
   EXPECT_THAT( questions( sfp() ), ElementsAre( ElementsAre( Block{ lower, 0, 3 } ),
                                                 ElementsAre( Block{ lower, 2, 94 } ),
                                                 ElementsAre( Block{ diagnostics, 0, 96 } ) ) );
   EXPECT_THAT( questions( qsfp() ),
                ElementsAre( ElementsAre( Block{ lower, 0, 3 } ),
                             ElementsAre( Block{ lower, 107, 7 }, Block{ page( 0 ), 128, 96 } ),
                             ElementsAre( Block{ page( 3 ), 128, 72 } ) ) );
   EXPECT_THAT(
      questions( qsfpDd() ),
      ElementsAre( ElementsAre( Block{ lower, 0, 3 } ),
                   ElementsAre( Block{ lower, 39, 2 }, Block{ lower, 85, 33 },
                                Block{ page( 0 ), 128, 95 }, Block{ page( 1 ), 128, 128 } ),
                   ElementsAre( Block{ page( 2 ), 128, 128 } ) ) );
}

TEST( ReadPlanTest, AsksNothingAtA2hOfAModuleThatHasNoDiagnosticsThere ) {
   for ( const unsigned type : { 0x28u, 0x6Cu, 0x00u } ) {
      Bytes file = sfp();
      file[92] = static_cast<uint8_t>( type );
      EXPECT_EQ( questions( file ).size(), 2u );
      EXPECT_THAT( live( file ), IsEmpty() );
   }
}

TEST( ReadPlanTest, AsksForNoPageThatAModuleLacks ) {
   Bytes file = qsfp();
   file[2] = 0x06;
   file[129] |= 0x10; // a CLEI code, on a page that isn't there
   EXPECT_THAT( questions( file ),
                ElementsAre( ElementsAre( Block{ lower, 0, 3 } ),
                             ElementsAre( Block{ lower, 107, 7 }, Block{ page( 0 ), 128, 96 } ) ) );
   file = qsfpDd();
   file[2] = 0x80;
   EXPECT_THAT( questions( file ),
                ElementsAre( ElementsAre( Block{ lower, 0, 3 } ),
                             ElementsAre( Block{ lower, 39, 2 }, Block{ lower, 85, 33 },
                                          Block{ page( 0 ), 128, 95 } ) ) );
   EXPECT_THAT( live( file ), ElementsAre( Block{ lower, 2, 2 } ) );
}

TEST( ReadPlanTest, AsksForTheCleiCodeOfAModuleThatHasOne ) {
   Bytes file = qsfp();
   file[129] |= 0x10;
   EXPECT_THAT( questions( file ).at( 2 ),
                ElementsAre( Block{ page( 2 ), 128, 10 }, Block{ page( 3 ), 128, 72 } ) );
   file[195] &= 0x7F;
   EXPECT_THAT( questions( file ).at( 2 ), ElementsAre( Block{ page( 3 ), 128, 72 } ) );
}

TEST( ReadPlanTest, AsksNothingMoreOfWhatItDoesNotKnow ) {
   Image image;
   image.put( lower, 0, Bytes{ 0x06, 0x00, 0x00 } );
   EXPECT_THAT( identityBlocks( image ), IsEmpty() );
   EXPECT_THAT( liveBlocks( image ), IsEmpty() );
}

TEST( ReadPlanTest, ReadsMonitorsStatesAndFlagsInFewBlocks ) {
   EXPECT_THAT( live( sfp() ), ElementsAre( Block{ diagnostics, 96, 22 } ) );
   EXPECT_THAT( live( qsfp() ), ElementsAre( Block{ lower, 2, 56 }, Block{ lower, 86, 8 } ) );
   EXPECT_THAT( live( qsfpDd() ),
                ElementsAre( Block{ lower, 2, 20 }, Block{ lower, 41, 1 },
                             Block{ page( 0x10 ), 130, 9 }, Block{ page( 0x11 ), 128, 86 } ) );
}

TEST( ReadPlanTest, ReadsNoMonitorsThatAModuleDoesNotHave ) {
   Bytes file = sfp();
   file[93] = 0;
   EXPECT_THAT( live( file ), ElementsAre( Block{ diagnostics, 96, 15 } ) );
   file = qsfp();
   file[220] = 0x30;
   file[147] = 0xA0;
   EXPECT_THAT( live( file ), ElementsAre( Block{ lower, 2, 26 } ) );
   file[220] = 0;
   EXPECT_THAT( live( file ), ElementsAre( Block{ lower, 2, 1 } ) );
   file = qsfpDd();
   put( file, page01OfCmis + 155, { 0, 0, 0, 0, 0x01, 0x07 } );
   EXPECT_THAT( live( file ), ElementsAre( Block{ lower, 2, 14 }, Block{ lower, 41, 1 },
                                           Block{ page( 0x11 ), 128, 86 } ) );
}

TEST( ReadPlanTest, HoldsAllThatTheDecoderUses ) {
   for ( const Bytes &file : { sfp(), qsfp(), qsfpDd() } ) {
      Image image;
      questions( file, image );
      copy( imageOfFile( file, {} ), liveBlocks( image ), image );
      const Standard standard = standardOf( image ).value();
      const Module module = decode( image, standard );
      EXPECT_THAT( module.findings, IsEmpty() );
      EXPECT_FALSE( module.lanes.empty() );
      for ( const Monitor &monitor : module.monitors ) {
         EXPECT_NE( monitor.value, std::nullopt );
         EXPECT_NE( monitor.flags.lowWarning, std::nullopt );
      }
      for ( const Lane &lane : module.lanes )
         EXPECT_NE( lane.txDisabled.has_value(), standard == Standard::Cmis && lane.number > 4 );
   }
}

// A reader takes 32 bytes at once, from an even place.
TEST( ReadPlanTest, CutsNoWordApart ) {
   for ( const Bytes &file : { sfp(), qsfp(), qsfpDd() } )
      for ( const Block &block : live( file ) )
         EXPECT_TRUE( block.first % 2 == 0 || block.size == 1 ) << block.first;
}

} // namespace

} // namespace OpticsTest
