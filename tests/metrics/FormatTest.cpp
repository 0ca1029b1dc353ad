#include "metrics/Format.h"

#include <gtest/gtest.h>

namespace Metrics {

TEST( FormatTest, TellsTheContentTypeOfEach ) {
   EXPECT_EQ( contentTypeOf( Format::Text ), "text/plain; version=0.0.4; charset=utf-8" );
   EXPECT_EQ( contentTypeOf( Format::OpenMetrics ),
              "application/openmetrics-text; version=1.0.0; charset=utf-8" );
}

TEST( FormatTest, AClientWithoutAWishGetsText ) {
   for ( const char *accept : { "", "*/*", "text/plain", "text/html,*/*;q=0.8", ",;,=;q=" } )
      EXPECT_EQ( preferredBy( accept ), Format::Text ) << accept;
}

TEST( FormatTest, PrometheusGetsOpenMetrics ) {
   EXPECT_EQ( preferredBy( "application/openmetrics-text;version=1.0.0,"
                           "application/openmetrics-text;version=0.0.1;q=0.75,"
                           "text/plain;version=0.0.4;q=0.5,*/*;q=0.1" ),
              Format::OpenMetrics );
   EXPECT_EQ( preferredBy( R"(application/openmetrics-text; version="1.0.0"; charset=utf-8)" ),
              Format::OpenMetrics );
}

TEST( FormatTest, TheGreaterWeightDecides ) {
   EXPECT_EQ( preferredBy( "text/plain;version=0.0.4;q=0.9, application/openmetrics-text;q=0.8" ),
              Format::Text );
   EXPECT_EQ( preferredBy( "text/plain;q=0.5,application/openmetrics-text; q=0.5" ),
              Format::OpenMetrics );
   EXPECT_EQ( preferredBy( "application/openmetrics-text;q=0" ), Format::Text );
}

TEST( FormatTest, AnotherVersionOfOpenMetricsIsNone ) {
   EXPECT_EQ( preferredBy( "application/openmetrics-text;version=0.0.1" ), Format::Text );
   EXPECT_EQ( preferredBy( "application/openmetrics-text;version=2.0.0, text/plain;q=0.1" ),
              Format::Text );
}

} // namespace Metrics
