#include "metrics/Family.h"

#include <gtest/gtest.h>

#include <limits>

namespace Metrics {
namespace {

std::string written( const Family &family ) {
   std::string text;
   family.appendTo( text );
   return text;
}

std::string labelled( std::string_view value ) { return Labels{ { "l", value } }.text(); }

constexpr Description temperature{ .name = "board_temperature_celsius",
                                   .unit = "celsius",
                                   .help = "How warm \"it\" is.\nC:\\" };

} // namespace

TEST( FamilyTest, WritesHelpTypeAndSamplesInTheirOrder ) {
   Family family( temperature, Format::Text );
   family.add( { { "object", "temp-rear" } }, 31 );
   family.add( { { "object", "temp-front" }, { "value", "temperature" } }, -0.5 );
   EXPECT_EQ( written( family ),
              "# HELP board_temperature_celsius How warm \"it\" is.\\nC:\\\\\n"
              "# TYPE board_temperature_celsius gauge\n"
              "board_temperature_celsius{object=\"temp-rear\"} 31\n"
              "board_temperature_celsius{object=\"temp-front\",value=\"temperature\"} -0.5\n" );
}

TEST( FamilyTest, OpenMetricsHasTheUnitAndEscapesQuotesInHelp ) {
   Family family( temperature, Format::OpenMetrics );
   family.add( {}, 20 );
   EXPECT_EQ( written( family ),
              "# HELP board_temperature_celsius How warm \\\"it\\\" is.\\nC:\\\\\n"
              "# TYPE board_temperature_celsius gauge\n"
              "# UNIT board_temperature_celsius celsius\n"
              "board_temperature_celsius 20\n" );
}

TEST( FamilyTest, CountersAndInfosAreNamedAsEachFormatWantsIt ) {
   constexpr Description events{ .name = "board_events", .type = Type::Counter, .help = "Events." };
   constexpr Description build{ .name = "board_build", .type = Type::Info, .help = "Version." };
   const auto both = [&]( Format format ) {
      Family counter( events, format ), info( build, format );
      counter.add( {}, 12345678 );
      info.add( { { "version", "0.1" } }, 1 );
      return written( counter ) + written( info );
   };
   EXPECT_EQ( both( Format::Text ), "# HELP board_events_total Events.\n"
                                    "# TYPE board_events_total counter\n"
                                    "board_events_total 12345678\n"
                                    "# HELP board_build_info Version.\n"
                                    "# TYPE board_build_info gauge\n"
                                    "board_build_info{version=\"0.1\"} 1\n" );
   EXPECT_EQ( both( Format::OpenMetrics ), "# HELP board_events Events.\n"
                                           "# TYPE board_events counter\n"
                                           "board_events_total 12345678\n"
                                           "# HELP board_build Version.\n"
                                           "# TYPE board_build info\n"
                                           "board_build_info{version=\"0.1\"} 1\n" );
}

TEST( FamilyTest, AHistogramHasItsBucketsSumAndCount ) {
   Family family( { .name = "wait_seconds", .type = Type::Histogram, .unit = "seconds" },
                  Format::Text );
   family.add(
      { { "bus", "i2c:0" } },
      Histogram{ .buckets = { { 1e-05, 3 }, { 0.1, 4 }, { 1, 4 } }, .count = 5, .sum = 2.5 } );
   EXPECT_EQ( written( family ), "# HELP wait_seconds \n"
                                 "# TYPE wait_seconds histogram\n"
                                 "wait_seconds_bucket{bus=\"i2c:0\",le=\"1e-05\"} 3\n"
                                 "wait_seconds_bucket{bus=\"i2c:0\",le=\"0.1\"} 4\n"
                                 "wait_seconds_bucket{bus=\"i2c:0\",le=\"1.0\"} 4\n"
                                 "wait_seconds_bucket{bus=\"i2c:0\",le=\"+Inf\"} 5\n"
                                 "wait_seconds_sum{bus=\"i2c:0\"} 2.5\n"
                                 "wait_seconds_count{bus=\"i2c:0\"} 5\n" );
}

TEST( FamilyTest, ASumThatIsNotKnownIsMissing ) {
   Family family( { .name = "wait_seconds", .type = Type::Histogram }, Format::Text );
   family.add( {}, Histogram{ .count = 1 } );
   EXPECT_EQ( written( family ).find( "_sum" ), std::string::npos );
}

TEST( FamilyTest, NumbersThatAreNotFiniteHaveTheirWords ) {
   using Limits = std::numeric_limits<double>;
   Family family( temperature, Format::Text );
   for ( const double number : { Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity() } )
      family.add( {}, number );
   EXPECT_NE( written( family ).find( "celsius NaN\nboard_temperature_celsius +Inf\n"
                                      "board_temperature_celsius -Inf\n" ),
              std::string::npos );
}

TEST( FamilyTest, NumbersKeepAllTheirDigits ) {
   Family family( { .name = "n" }, Format::Text );
   family.add( {}, 1790000000.125 );
   family.add( {}, 0.1 + 0.2 );
   family.add( {}, Histogram{}.count );
   EXPECT_NE( written( family ).find( "n 1790000000.125\nn 0.30000000000000004\nn 0\n" ),
              std::string::npos );
}

TEST( FamilyTest, QuotesBackslashesAndLineEndsInLabelsAreEscaped ) {
   EXPECT_EQ( labelled( "a\"b\\c\nd" ), R"(l="a\"b\\c\nd")" );
}

TEST( FamilyTest, TextOfOtherLanguagesStays ) {
   for ( const char *text : { "°C", "日本", "\xF0\x9F\x98\x80", "\xEF\xBF\xBD", "\x7F\t" } )
      EXPECT_EQ( labelled( text ), std::string( "l=\"" ) + text + '"' );
}

TEST( FamilyTest, BytesThatAreNoUtf8AreReplacedOneByOne ) {
   const std::string bad = "\xEF\xBF\xBD";
   const auto is = [&]( std::string_view value, const std::string &text ) {
      EXPECT_EQ( labelled( value ), "l=\"" + text + '"' );
   };
   is( "a\xFFz", "a" + bad + "z" );
   is( "\xC3", bad );                               // cut off
   is( "\xC3(", bad + "(" );                        // no second byte
   is( "\xC0\xAF", bad + bad );                     // longer than needed
   is( "\xE0\x80\x80", bad + bad + bad );           // also
   is( "\xED\xA0\x80", bad + bad + bad );           // a surrogate
   is( "\xF4\x90\x80\x80", bad + bad + bad + bad ); // above U+10FFFF
   is( std::string_view( "a\0b", 3 ), "a" + bad + "b" );
}

TEST( FamilyTest, AnExpositionLeavesEmptyFamiliesOutAndTellsItsEnd ) {
   std::vector<Family> families;
   families.emplace_back( temperature, Format::OpenMetrics );
   families.emplace_back( Description{ .name = "up", .help = "Up." }, Format::OpenMetrics );
   families.back().add( {}, 1 );
   EXPECT_EQ( exposition( families, Format::OpenMetrics ),
              "# HELP up Up.\n# TYPE up gauge\nup 1\n# EOF\n" );
   families.clear();
   EXPECT_EQ( exposition( families, Format::Text ), "" );
}

} // namespace Metrics
