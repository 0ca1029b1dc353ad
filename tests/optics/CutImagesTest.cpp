#include "Facts.h"
#include "Images.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace OpticsTest {

namespace {

using namespace Optics;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

Module decodedAs( Standard standard, const Bytes &file ) {
   return decode( imageOfFile( file, standard ), standard );
}

// Modules whose bytes mean something else when others aren't known.
std::vector<std::pair<Standard, Bytes>> modules() {
   std::vector<std::pair<Standard, Bytes>> all{ { Standard::Sff8472, sfp() },
                                                { Standard::Sff8636, qsfp() },
                                                { Standard::Cmis, qsfpDd() } };
   Bytes external = sfp();
   external[92] = 0x58;
   all.emplace_back( Standard::Sff8472, external );
   Bytes notReady = sfp();
   notReady[a2 + 110] = 0x01;
   all.emplace_back( Standard::Sff8472, notReady );
   Bytes cable = sfp();
   put( cable, 8, { 0x08 } );
   put( cable, 60, { 0x05, 0x00 } );
   all.emplace_back( Standard::Sff8472, cable );
   Bytes copper = qsfp();
   put( copper, 145, { 14, 3, 0xA0 } );
   all.emplace_back( Standard::Sff8636, copper );
   Bytes scaled = qsfpDd();
   scaled[page01OfCmis + 160] = 0x17;
   all.emplace_back( Standard::Cmis, scaled );
   return all;
}

TEST( CutImagesTest, SayNothingThatTheWholeImageDoesNotSay ) {
   for ( const auto &[standard, file] : modules() ) {
      const Facts whole = factsOf( decodedAs( standard, file ) );
      for ( size_t size = 0; size < file.size(); ++size ) {
         const Bytes cut( file.begin(), file.begin() + static_cast<std::ptrdiff_t>( size ) );
         const Facts facts = factsOf( decodedAs( standard, cut ) );
         EXPECT_THAT( notIn( whole, facts ), IsEmpty() )
            << nameOf( standard ) << " cut at " << size;
      }
   }
}

TEST( CutImagesTest, SayWhatIsMissing ) {
   for ( const auto &[standard, file] : modules() ) {
      const Facts whole = factsOf( decodedAs( standard, file ) );
      for ( size_t size = 0; size < file.size(); ++size ) {
         const Bytes cut( file.begin(), file.begin() + static_cast<std::ptrdiff_t>( size ) );
         const Module module = decodedAs( standard, cut );
         if ( factsOf( module ) == whole )
            continue;
         EXPECT_THAT( module.findings, Contains( HasSubstr( "read: " ) ) )
            << nameOf( standard ) << " cut at " << size;
      }
   }
}

TEST( CutImagesTest, WithAHoleSayNothingThatTheWholeImageDoesNotSay ) {
   for ( const auto &[standard, file] : modules() ) {
      const Image image = imageOfFile( file, standard );
      const Facts whole = factsOf( decode( image, standard ) );
      for ( const auto &[holed, bytes] : image.regions() )
         for ( unsigned hole = 0; hole < bytes.size(); ++hole ) {
            Image without;
            for ( const auto &[region, all] : image.regions() )
               for ( unsigned i = 0; i < all.size(); ++i )
                  if ( region != holed || i != hole )
                     without.put( region, i + ( region.upper ? 128 : 0 ), std::array{ *all[i] } );
            EXPECT_THAT( notIn( whole, factsOf( decode( without, standard ) ) ), IsEmpty() )
               << nameOf( standard ) << " without byte " << hole << " of page " << holed.page;
         }
   }
}

TEST( CutImagesTest, AreComparedByAllThatAModuleSays ) {
   Facts facts = factsOf( decodedAs( Standard::Sff8636, qsfp() ) );
   EXPECT_EQ( facts.at( "rx power 2 value" ), "0.4001;" );
   EXPECT_EQ( facts.at( "lane 4 tx fault" ), "no" );
   Facts other = facts;
   other["lane 4 tx fault"] = "yes";
   EXPECT_THAT( notIn( facts, other ), Not( IsEmpty() ) );
   other = facts;
   other["something"] = "else";
   EXPECT_THAT( notIn( facts, other ), Not( IsEmpty() ) );
   EXPECT_THAT( notIn( other, facts ), IsEmpty() );
}

} // namespace

} // namespace OpticsTest
