#include "http/Query.h"

#include <gmock/gmock.h>

namespace Http {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;

TEST( QueryTest, ItsValuesComeByTheirNames ) {
   EXPECT_THAT( Http::parseQuery( "since=2h&object=fan%201%c3%A9+x" ).value(),
                ElementsAre( Pair( "object", "fan 1\xc3\xa9 x" ), Pair( "since", "2h" ) ) );
   EXPECT_THAT(
      Http::parseQuery( "a&b=&=c&&d=1=2" ).value(),
      ElementsAre( Pair( "", "c" ), Pair( "a", "" ), Pair( "b", "" ), Pair( "d", "1=2" ) ) );
   EXPECT_TRUE( Http::parseQuery( "" ).value().empty() );
   EXPECT_THAT( Http::parseQuery( "a=1&a=2" ).value(), ElementsAre( Pair( "a", "2" ) ) );
}

TEST( QueryTest, APercentWithoutTwoDigitsIsRefused ) {
   for ( const char *wrong : { "a=%", "a=%4", "a=%4g", "a=%-1", "%zz=1", "a=1&b=%" } )
      EXPECT_FALSE( Http::parseQuery( wrong ) ) << wrong;
}

TEST( QueryTest, WhatIsEncodedIsDecoded ) {
   EXPECT_EQ( Http::urlEncoded( "2026-11-22 13:00+%&=\xc3" ),
              "2026-11-22%2013%3A00%2B%25%26%3D%C3" );
   std::string all;
   for ( int byte = 0; byte < 256; ++byte )
      all += static_cast<char>( byte );
   EXPECT_EQ( Http::parseQuery( "a=" + Http::urlEncoded( all ) ).value().at( "a" ), all );
}

TEST( QueryTest, OnlyDigitsAreAWholeNumber ) {
   EXPECT_EQ( wholeNumber( "0" ), 0u );
   EXPECT_EQ( wholeNumber( "18446744073709551615" ), UINT64_MAX );
   for ( const char *wrong : { "", "-1", "+1", " 1", "1 ", "1x", "18446744073709551616" } )
      EXPECT_EQ( wholeNumber( wrong ), std::nullopt ) << wrong;
}

} // namespace
} // namespace Http
