// A decoded module as the values of an object.
#include "host/session/ModuleReadings.h"

#include "host/session/CageModule.h"

#include <gmock/gmock.h>

namespace Host {
namespace {

using Optics::Quantity;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ModuleReadingsTest : public ::testing::Test {
 protected:
   Reading reading( const std::string &name ) const {
      for ( const Reading &one : readingsOf( module_ ) )
         if ( one.name == name )
            return one;
      return { .name = "none", .state = State::Unsupported };
   }

   Optics::Module module_{
      .vendor = "Orbis Optics",
      .partNumber = "OQ",
      .serial = "7",
      .monitors = { { .quantity = Quantity::Temperature,
                      .unit = "°C",
                      .value = 31.50390625,
                      .thresholds = { .highAlarm = 75, .highWarning = 70, .lowWarning = 0 } },
                    { .quantity = Quantity::TxPower,
                      .lane = 1,
                      .unit = "mW",
                      .value = 0,
                      .thresholds = { .lowAlarm = 0.1, .lowWarning = 0.2 } },
                    { .quantity = Quantity::RxPower, .lane = 2, .unit = "mW", .value = 0.5 } },
      .lanes = { { .number = 1 }, { .number = 2 } }
   };
};

TEST_F( ModuleReadingsTest, HasIdentityMonitorsAndFlags ) {
   std::vector<std::string> names;
   for ( const Reading &one : readingsOf( module_ ) )
      names.push_back( one.name );
   EXPECT_THAT( names, ElementsAre( "vendor", "part_number", "serial", "temperature", "tx_power_1",
                                    "rx_power_2", "flags" ) );
   EXPECT_EQ( reading( "temperature" ).value, Scalar( 31.5039 ) );
   EXPECT_EQ( reading( "temperature" ).unit, "°C" );
   EXPECT_EQ( reading( "flags" ).value, Scalar( std::string( "ok" ) ) );
   module_.lanes.resize( 1 );
   EXPECT_EQ( reading( "tx_power" ).value, Scalar( 0. ) ); // the only lane has no number
}

TEST_F( ModuleReadingsTest, AValueThatIsNotKnownIsUnreadableAndSaysWhy ) {
   module_.monitors[0].value.reset();
   EXPECT_EQ( reading( "temperature" ).state, State::Unreadable );
   EXPECT_EQ( reading( "temperature" ).fault.words, "the module's memory doesn't hold it" );
   module_.isReady = false;
   EXPECT_EQ( reading( "temperature" ).fault.words, "the module is not ready yet" );
}

TEST_F( ModuleReadingsTest, AllFlagsAreInOneText ) {
   module_.monitors[2].flags = { .lowAlarm = true, .lowWarning = true };
   module_.lanes[1].rxLos = true;
   module_.lanes[0].txFault = true;
   module_.lanes[0].rxLos = false;
   module_.flags = { "TEC fault" };
   EXPECT_EQ( reading( "flags" ).value,
              Scalar( std::string( "rx_power_2 low alarm, rx_power_2 low warning, tx_fault 1, "
                                   "rx_los 2, TEC fault" ) ) );
}

TEST_F( ModuleReadingsTest, ItsOwnThresholdsAreLimits ) {
   const auto limits = limitsOf( module_ );
   EXPECT_EQ( limits.at( "temperature" ).highCritical, 75 );
   EXPECT_EQ( limits.at( "temperature" ).highWarning, 70 );
   EXPECT_EQ( limits.at( "temperature" ).lowWarning, 0 );
   EXPECT_EQ( limits.at( "temperature" ).hysteresis, 1.4 );
   EXPECT_EQ( limits.at( "tx_power_1" ).lowCritical, 0.1 );
   EXPECT_FALSE( limits.at( "rx_power_2" ).any() );
}

TEST_F( ModuleReadingsTest, ThresholdsThatContradictEachOtherAreLeftOut ) {
   module_.monitors[0].thresholds = { .highAlarm = 10, .highWarning = 20 };
   EXPECT_FALSE( limitsOf( module_.monitors[0] ).any() );
   // As an empty memory has them.
   module_.monitors[0].thresholds = {
      .highAlarm = 0, .lowAlarm = 0, .highWarning = 0, .lowWarning = 0
   };
   EXPECT_FALSE( limitsOf( module_.monitors[0] ).any() );
}

// Somebody wants no light from it.
TEST_F( ModuleReadingsTest, ATransmitterThatIsOffIsNotBeyondItsThresholds ) {
   module_.monitors[1].flags.lowAlarm = true;
   EXPECT_TRUE( limitsOf( module_ ).at( "tx_power_1" ).any() );
   module_.lanes[0].txDisabled = true;
   EXPECT_FALSE( limitsOf( module_ ).at( "tx_power_1" ).any() );
   EXPECT_TRUE( limitsOf( module_ ).at( "tx_power_1" ).ignored ); // those of the board, too
   EXPECT_FALSE( limitsOf( module_ ).at( "rx_power_2" ).ignored );
   EXPECT_EQ( reading( "flags" ).value, Scalar( std::string( "ok" ) ) );
   module_.lanes[0] = { .dataPathState = Optics::Code{ 1, "deactivated" } };
   EXPECT_FALSE( limitsOf( module_ ).at( "tx_power_1" ).any() );
   module_.lanes[0] = { .dataPathState = Optics::Code{ 4, "activated" } };
   EXPECT_TRUE( limitsOf( module_ ).at( "tx_power_1" ).any() );
   module_.isLowPower = true;
   EXPECT_FALSE( limitsOf( module_ ).at( "tx_power_1" ).any() );
}

TEST_F( ModuleReadingsTest, TheWorstIsAnAlarmBeforeAFlagOfALaneBeforeAWarning ) {
   module_.monitors[1].value = 0.3;
   EXPECT_EQ( worstOf( module_ ), "" );
   module_.monitors[1].value = 0.15;
   EXPECT_EQ( worstOf( module_ ), "tx_power_1 low warning" ); // without a flag, by its value
   module_.lanes[1].rxLos = true;
   EXPECT_EQ( worstOf( module_ ), "rx_los 2" );
   module_.monitors[2].flags.lowAlarm = true;
   EXPECT_EQ( worstOf( module_ ), "rx_power_2 low alarm" );
}

} // namespace
} // namespace Host
