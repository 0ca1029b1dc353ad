#include "history/Store.h"

#include <cmath>
#include <gmock/gmock.h>

namespace History {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;

class StoreTest : public ::testing::Test {
 protected:
   // What a report tells of the object so many seconds after the beginning.
   void told( double second, const Health::Scalar &value, Health::State state = Health::State::Ok,
              double age = 0 ) {
      Health::ObjectReport object{ .name = "psu" };
      object.values.push_back(
         { .reading = { .name = "power", .unit = "W", .state = state, .value = value },
           .age = age } );
      store_.add( { object }, at( second ) );
   }
   // The value isn't in the report any more.
   void gone( double second ) { store_.add( { { .name = "psu" } }, at( second ) ); }
   static Health::Instant at( double second ) {
      return { std::chrono::steady_clock::time_point( begin + duration( second ) ), {} };
   }
   static std::chrono::milliseconds duration( double seconds ) {
      return std::chrono::round<std::chrono::milliseconds>(
         std::chrono::duration<double>( seconds ) );
   }
   // "SECOND=NUMBER" of each reading.
   std::vector<std::string> readings( double from = 0 ) const {
      std::vector<std::string> texts;
      for ( const Sample &sample : store_.of( 0 ).at( 0 ).readings( begin + duration( from ) ) )
         texts.push_back( text( sample.at - begin ) + "=" +
                          ( std::isnan( sample.number ) ? "" : number( sample.number ) ) );
      return texts;
   }
   std::vector<std::string> minutes( double from = 0 ) const {
      std::vector<std::string> texts;
      for ( const Minute &minute : store_.of( 0 ).at( 0 ).minutes( begin + duration( from ) ) )
         texts.push_back( text( minute.at - begin ) + "=" + number( minute.lowest ) + ".." +
                          number( minute.highest ) );
      return texts;
   }
   static std::string text( Moment moment ) {
      return number( std::chrono::duration<double>( moment ).count() );
   }
   static std::string number( double what ) {
      std::string digits = std::to_string( what );
      digits.erase( digits.find_last_not_of( '0' ) + 1 );
      return digits.back() == '.' ? digits.substr( 0, digits.size() - 1 ) : digits;
   }

   static constexpr Moment begin = 100h;
   Store store_;
};

TEST_F( StoreTest, KeepsEachReadingOnce ) {
   told( 1, 5.5 );
   told( 2, 5.5, Health::State::Ok, 1.0004 ); // the same, a second later
   told( 3, 6.5, Health::State::Ok, 0.2 );
   EXPECT_THAT( readings(), ElementsAre( "1=5.5", "2.8=6.5" ) );
   EXPECT_THAT( readings( 2 ), ElementsAre( "2.8=6.5" ) );
   EXPECT_EQ( store_.of( 0 ).at( 0 ).unit(), "W" );
}

TEST_F( StoreTest, KeepsWhatIsANumberOrYesOrNo ) {
   told( 1, true );
   told( 2, int64_t{ 7 } );
   told( 3, std::string( "text" ) );
   told( 4, std::monostate() );
   EXPECT_THAT( readings(), ElementsAre( "1=1", "2=7", "3=" ) );
}

TEST_F( StoreTest, HasAGapWhereNothingIsKnown ) {
   told( 1, 5.0 );
   told( 2, 5.0, Health::State::Unreadable, 1 );
   told( 3, 5.0, Health::State::Unreadable, 2 );
   told( 4, 6.0 );
   gone( 5 );
   gone( 6 );
   EXPECT_THAT( readings(), ElementsAre( "1=5", "2=", "4=6", "5=" ) );
   EXPECT_THAT( minutes(), ElementsAre( "0=5..6" ) );
}

TEST_F( StoreTest, KeepsTheLowestAndHighestOfEachMinute ) {
   told( 1, 5.0 );
   told( 30, 3.0 );
   told( 59, 4.0 );
   told( 60, -1.0 );
   told( 180, 8.0 );
   EXPECT_THAT( minutes(), ElementsAre( "0=3..5", "60=-1..-1", "180=8..8" ) );
   EXPECT_THAT( minutes( 61 ), ElementsAre( "60=-1..-1", "180=8..8" ) );
}

TEST_F( StoreTest, ForgetsReadingsAfterAnHourAndMinutesAfterADay ) {
   for ( int second = 0; second < 2 * 24 * 3600; second += 10 )
      told( second, double( second ) );
   const double end = 2 * 24 * 3600 - 10;
   EXPECT_GE( readings().size(), 360u );
   EXPECT_LE( readings().size(), 360u + 120 ); // one chunk more at most
   EXPECT_GE( minutes().size(), 1440u );
   EXPECT_LE( minutes().size(), 1440u + 60 );
   EXPECT_EQ( readings( end ).size(), 1u );
}

TEST_F( StoreTest, DoesNotGrowBeyondItsLimit ) {
   constexpr size_t limit = 20'000;
   Store small( { .bytes = limit } );
   Health::BoardReport report( 5, { .name = "psu" } );
   for ( auto &object : report )
      object.values.push_back( { .reading = { .name = "power" } } );
   for ( int second = 0; second < 3600; ++second ) {
      for ( auto &object : report )
         object.values[0].reading.value = double( second );
      small.add( report, at( second ) );
      ASSERT_LE( small.bytes(), limit );
   }
   // The newest are there.
   for ( size_t i = 0; i < report.size(); ++i )
      EXPECT_EQ( small.of( i ).at( 0 ).readings( begin + 3599s ).size(), 1u );
   EXPECT_GT( small.bytes(), limit / 2 );
}

TEST_F( StoreTest, CountsWhatItTakesAndFrees ) {
   EXPECT_EQ( store_.bytes(), 0u );
   told( 0, 1.0 );
   const size_t one = store_.bytes();
   EXPECT_GT( one, 0u );
   for ( int day = 1; day < 10; ++day ) // what was before is forgotten each time
      told( day * 2 * 24 * 3600.0, 1.0 );
   EXPECT_EQ( store_.bytes(), one );
}

TEST_F( StoreTest, KnowsNothingOfOtherObjects ) { EXPECT_TRUE( store_.of( 7 ).empty() ); }

} // namespace
} // namespace History
