#include "health/Times.h"

#include <cstdlib>
#include <ctime>
#include <gmock/gmock.h>

namespace Health {
namespace {

using namespace std::chrono_literals;

// In a place with winter and summer time.
class TimesTest : public ::testing::Test {
 protected:
   TimesTest() { setZone( "CET-1CEST,M3.5.0,M10.5.0/3" ); }
   ~TimesTest() override { setZone( "UTC0" ); }

   static void setZone( const char *zone ) {
      ::setenv( "TZ", zone, 1 );
      ::tzset();
   }
   static WallTime at( const char *text ) { return timeIn( text ).value(); }
   std::optional<Since> since( std::string_view text ) const { return sinceOf( text, now_ ); }

   const WallTime now_ = at( "2026-11-22T12:30:10.500Z" ); // 13:30:10 there
};

TEST_F( TimesTest, ATimeIsWrittenAndReadToTheMillisecond ) {
   EXPECT_EQ( timeText( WallTime( 0ms ) ), "1970-01-01T00:00:00.000Z" );
   EXPECT_EQ( timeText( WallTime( 951'782'399'007ms ) ), "2000-02-28T23:59:59.007Z" );
   EXPECT_EQ( at( "2000-02-28T23:59:59.007Z" ), WallTime( 951'782'399'007ms ) );
   EXPECT_EQ( at( "2000-02-28T23:59:59Z" ), WallTime( 951'782'399'000ms ) );
   for ( const char *wrong : { "", "Z", "2000-02-28T23:59:59", "2000-02-28T23:59:59.07Z",
                               "2000-02-28T23:59:59.-07Z", "2000-02-28 23:59:59.007Z" } )
      EXPECT_FALSE( timeIn( wrong ) ) << wrong;
}

TEST_F( TimesTest, APersonReadsTheTimeOfThePlace ) {
   EXPECT_EQ( localTimeText( now_ ), "2026-11-22 13:30:10" );
   EXPECT_EQ( localTimeText( at( "2026-07-01T00:00:00Z" ) ), "2026-07-01 02:00:00" );
}

TEST_F( TimesTest, SinceIsADateAndTimeOfThePlace ) {
   EXPECT_EQ( since( "2026-11-22 13:00" ), Since{ at( "2026-11-22T12:00:00Z" ) } );
   EXPECT_EQ( since( "2026-07-01 02:00:05" ), Since{ at( "2026-07-01T00:00:05Z" ) } );
   EXPECT_EQ( since( "2026-11-22" ), Since{ at( "2026-11-21T23:00:00Z" ) } );
   EXPECT_EQ( since( "2026-11-22T12:00:00.250Z" ), Since{ at( "2026-11-22T12:00:00.250Z" ) } );
}

TEST_F( TimesTest, SinceATimeOfTheDayIsTheLastOne ) {
   EXPECT_EQ( since( "13:30" ), Since{ at( "2026-11-22T12:30:00Z" ) } );
   EXPECT_EQ( since( "13:31" ), Since{ at( "2026-11-21T12:31:00Z" ) } );
   EXPECT_EQ( since( "0:05" ), Since{ at( "2026-11-21T23:05:00Z" ) } );
}

TEST_F( TimesTest, SinceIsATimeAgo ) {
   EXPECT_EQ( since( "90s" ), Since{ now_ - 90s } );
   EXPECT_EQ( since( "10m" ), Since{ now_ - 10min } );
   EXPECT_EQ( since( "2h" ), Since{ now_ - 2h } );
   EXPECT_EQ( since( "3d" ), Since{ now_ - 72h } );
}

TEST_F( TimesTest, SinceIsTheNumberOfAnEvent ) {
   EXPECT_EQ( since( "17" ), ( Since{ .id = 17 } ) );
}

TEST_F( TimesTest, AnythingElseIsRefused ) {
   for ( const char *wrong : { "", "s", "-5m", "5 m", "5w", "99999999999999999999s", "yesterday",
                               "13:00x", "2026-13-01 00:00", "25:00" } )
      EXPECT_FALSE( since( wrong ) ) << wrong;
   EXPECT_FALSE( since( std::string_view( "13:00\0x", 7 ) ) ); // as a query can have it
}

} // namespace
} // namespace Health
