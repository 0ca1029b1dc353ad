// What orbis-host health prints.
#include "host/terminal/HealthText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class HealthTextTest : public ::testing::Test {
 protected:
   HealthTextTest() { ::setenv( "TZ", "UTC", 1 ); }

   static HealthReport withSupply() {
      return { .level = Health::Level::Critical,
               .causes = { { .key = "psu1 input lost",
                             .object = "psu1",
                             .level = Health::Level::Critical,
                             .words = "input undervoltage, unit off for insufficient input voltage",
                             .since = Health::WallTime( std::chrono::seconds( 1000 ) ),
                             .explains = { "psu1-fan1", "supplies" } } },
               .objects = 104,
               .good = 96,
               .absent = 28 };
   }
};

TEST_F( HealthTextTest, AGoodBoardIsOneLine ) {
   const HealthReport good{ .level = Health::Level::Ok, .objects = 104, .good = 104, .absent = 28 };
   EXPECT_EQ( summaryOf( good ),
              "OK: all 104 objects are good; 28 more are of modules that are not there" );
   EXPECT_THAT( linesOf( good, 80 ), IsEmpty() );
}

TEST_F( HealthTextTest, NobodyIsGoodBeforeAnybodyHasLooked ) {
   EXPECT_EQ( summaryOf( {} ), "UNKNOWN: still looking for the cause; nothing is known yet" );
}

TEST_F( HealthTextTest, TheFirstLineNamesTheCauses ) {
   EXPECT_EQ( summaryOf( withSupply() ), "CRITICAL: 1 cause: psu1 input lost" );
   HealthReport two = withSupply();
   two.causes.push_back( { .key = "temp-rear silent" } );
   EXPECT_EQ( summaryOf( two ), "CRITICAL: 2 causes: psu1 input lost, temp-rear silent" );
}

TEST_F( HealthTextTest, ThenEachCauseWithWhatItExplainsAndWhatIsFine ) {
   EXPECT_THAT(
      linesOf( withSupply(), 0 ),
      ElementsAre( "critical  psu1 input lost: input undervoltage, unit off for insufficient input "
                   "voltage",
                   "          since 1970-01-01 00:16:40", "          explains psu1-fan1, supplies",
                   "ok        96 of 104 objects are good; 28 more are of modules that are not "
                   "there" ) );
}

TEST_F( HealthTextTest, LongLinesAreWrappedAtATerminal ) {
   EXPECT_EQ( linesOf( withSupply(), 80 )[0],
              "critical  psu1 input lost: input undervoltage, unit off for insufficient input" );
   EXPECT_EQ( linesOf( withSupply(), 80 )[1], "          voltage" );
}

TEST_F( HealthTextTest, NumbersForMonitoringHaveTheirLimitsAsRanges ) {
   BoardReport report{
      { .name = "temp",
        .values = { { { .name = "temperature", .unit = "°C", .value = 24.5 } } },
        .health =
           Health::ObjectHealth{
              .values = { { .limits = BoardFiles::ValueLimits{ .highWarning = 60,
                                                               .highCritical = 70 } } } } },
      { .name = "fan",
        .values = { { { .name = "speed", .unit = "rpm", .value = int64_t{ 6000 } } },
                    { { .name = "duty", .unit = "%", .value = 25.0 } },
                    { { .name = "old", .unit = "V", .state = State::Stale, .value = 1.0 } } },
        .health =
           Health::ObjectHealth{
              .values = { { .limits = BoardFiles::ValueLimits{ .lowCritical = 1000 } } } } }
   };
   EXPECT_EQ( performanceDataOf( report ),
              "'temp_temperature'=24.5;~:60;~:70 'fan_speed'=6000;;1000: 'fan_duty'=25%;;" );
}

} // namespace
} // namespace Host
