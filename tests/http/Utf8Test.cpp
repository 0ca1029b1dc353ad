#include "http/Utf8.h"

#include "http/Exchange.h"

#include <gtest/gtest.h>

namespace Http {
namespace {

TEST( Utf8Test, BytesThatAreNoUtf8AreReplacedOneByOne ) {
   EXPECT_EQ( withoutOtherBytes( "25 °C, 𝄞" ), "25 °C, 𝄞" );
   EXPECT_EQ( withoutOtherBytes( "a\xFF\xC3" ), "a\xEF\xBF\xBD\xEF\xBF\xBD" );
   EXPECT_EQ( withoutOtherBytes( "\xE2\x82" ), "\xEF\xBF\xBD\xEF\xBF\xBD" );   // cut
   EXPECT_EQ( withoutOtherBytes( "\xC0\x80!" ), "\xEF\xBF\xBD\xEF\xBF\xBD!" ); // too long
   EXPECT_EQ( withoutOtherBytes( std::string_view( "a\0b", 3 ) ), std::string( "a\0b", 3 ) );
   EXPECT_EQ( withoutOtherBytes( std::string_view( "\xED\xA0\x80", 3 ) ), // half of a pair
              "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD" );
}

TEST( Utf8Test, AnErrorNamesWhatIsNoUtf8InValidJson ) {
   EXPECT_EQ( errorResponse( 404, "no such path: /\xFF\"" ).body,
              "{\"error\":\"no such path: /\xEF\xBF\xBD\\\"\"}" );
}

} // namespace
} // namespace Http
