#include "host/terminal/Table.h"

#include <gtest/gtest.h>

namespace HostTest {

namespace {

using Host::Scalar;
using Host::toText;

TEST( TableTest, ANumberHasTheDigitsThatAChipMeasures ) {
   EXPECT_EQ( toText( Scalar( 11.957031 ) ), "11.96" );
   EXPECT_EQ( toText( Scalar( 1.0195312 ) ), "1.02" );
   EXPECT_EQ( toText( Scalar( 38.3125 ) ), "38.31" );
   EXPECT_EQ( toText( Scalar( 232.25 ) ), "232.2" );
   EXPECT_EQ( toText( Scalar( 0.0625 ) ), "0.062" );
   EXPECT_EQ( toText( Scalar( -25.5 ) ), "-25.5" );
   EXPECT_EQ( toText( Scalar( 230.0 ) ), "230.0" );
   EXPECT_EQ( toText( Scalar( 0.0 ) ), "0.0" );
   EXPECT_EQ( toText( Scalar( 12345.5 ) ), "12345.5" );
}

TEST( TableTest, OtherValuesAreWords ) {
   EXPECT_EQ( toText( Scalar( int64_t( 8688 ) ) ), "8688" );
   EXPECT_EQ( toText( Scalar( true ) ), "yes" );
   EXPECT_EQ( toText( Scalar( std::string() ) ), "-" );
   EXPECT_EQ( toText( Scalar() ), "-" );
}

} // namespace

} // namespace HostTest
