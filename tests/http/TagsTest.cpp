#include "http/Tags.h"

#include <gtest/gtest.h>

namespace Http {
namespace {

TEST( TagsTest, ATagIsKnownAloneInAListAndFromAProxy ) {
   EXPECT_TRUE( hasTag( "\"1\"", "\"1\"" ) );
   EXPECT_TRUE( hasTag( "\"2\" ,\t\"1\"", "\"1\"" ) );
   EXPECT_TRUE( hasTag( "W/\"1\"", "\"1\"" ) );
   EXPECT_TRUE( hasTag( "*", "\"1\"" ) );
}

TEST( TagsTest, AnotherTagAndNoneAreNot ) {
   EXPECT_FALSE( hasTag( "", "\"1\"" ) );
   EXPECT_FALSE( hasTag( "\"2\"", "\"1\"" ) );
   EXPECT_FALSE( hasTag( "1", "\"1\"" ) );
   EXPECT_FALSE( hasTag( " , ,", "\"1\"" ) );
}

} // namespace
} // namespace Http
