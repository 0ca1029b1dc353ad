// What is wrong with the modules in the cages, and which of them come and go.
#include "health/Monitor.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

namespace Health {
namespace {

using BoardFiles::Kind;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ModulesTest : public ::testing::Test {
 protected:
   ModulesTest() {
      put( 0, "presence", true );
      put( 1, "vendor", std::string( "Orbis" ) );
      put( 1, "part_number", std::string( "OQ" ) );
      put( 1, "serial", std::string( "A" ) );
      put( 1, "rx_power_1", 0.5, "mW" );
      put( 1, "rx_power_2", 0.5, "mW" );
      put( 1, "flags", std::string( "ok" ) );
      seconds( 1 );
      for ( const char *value : { "rx_power_1", "rx_power_2" } )
         monitor_.knows( 1, value, { .lowCritical = 0.1, .lowWarning = 0.2, .hysteresis = 0.01 } );
   }

   static BoardFiles::Board makeBoard() {
      BoardFiles::Board board{ .objects = { { .kind = Kind::Xcvr, .name = "qsfp1" },
                                            { .kind = Kind::Module, .name = "qsfp1-module" } } };
      board.objects[1].health.in = "qsfp1";
      return board;
   }
   void put( size_t object, const std::string &name, const Scalar &scalar,
             const std::string &unit = "" ) {
      for ( ValueReport &one : report_[object].values )
         if ( one.reading.name == name ) {
            one.reading.value = scalar;
            return;
         }
      report_[object].values.push_back( { { .name = name, .unit = unit, .value = scalar } } );
   }
   void pull() {
      report_[0].values[0].reading.state = State::Absent;
      report_[1].state = State::Absent;
      report_[1].values.clear();
   }
   void plug( const std::string &serial ) {
      report_[0].values[0].reading.state = State::Ok;
      report_[1].state = State::Ok;
      put( 1, "vendor", std::string( "Orbis" ) );
      put( 1, "part_number", std::string( "OQ" ) );
      put( 1, "serial", serial );
   }

   // What happens in so many seconds: "critical qsfp1-module rx_power limit: WORDS".
   std::vector<std::string> seconds( int count ) {
      std::vector<std::string> told;
      for ( int i = 0; i < count; ++i ) {
         ++second_;
         const Instant now{ std::chrono::steady_clock::time_point(
                               std::chrono::seconds( second_ ) ),
                            WallTime( std::chrono::seconds( second_ ) ) };
         for ( const Event &event : monitor_.update( report_, {}, now ) )
            told.push_back( fmt::format( "{} {}: {}",
                                         event.what == Event::What::Set ? nameOf( event.level )
                                                                        : nameOf( event.what ),
                                         event.cause, event.words ) );
      }
      return told;
   }

   const BoardFiles::Board board_ = makeBoard();
   BoardReport report_{ { .name = "qsfp1", .type = "xcvr" },
                        { .name = "qsfp1-module", .type = "module" } };
   Monitor monitor_{ board_, 3 };
   int second_ = 0;
};

TEST_F( ModulesTest, ALaneBelowTheModulesOwnThresholdIsToldWithIt ) {
   put( 1, "rx_power_2", 0.05, "mW" );
   EXPECT_THAT( seconds( 4 ),
                ElementsAre( "critical qsfp1-module rx_power limit: 0.05 mW (-13 dBm) is below the "
                             "critical limit of 0.1 mW (-10 dBm) on lane 2" ) );
   put( 1, "rx_power_2", 0.5, "mW" );
   EXPECT_THAT( seconds( 1 ),
                ElementsAre( "clear qsfp1-module rx_power limit: good again after 4 s" ) );
}

// A fibre that is pulled takes all lanes.
TEST_F( ModulesTest, ThreeLanesOrOneOfAFibreAreOneEvent ) {
   put( 1, "rx_power_1", 0.15, "mW" );
   put( 1, "rx_power_2", 0., "mW" );
   put( 1, "flags", std::string( "rx_power_2 low alarm, rx_power_2 low warning, rx_los 2" ) );
   EXPECT_THAT( seconds( 10 ),
                ElementsAre( "critical qsfp1-module rx_power limit: 0 mW (no light) is below the "
                             "critical limit of 0.1 mW (-10 dBm) on lanes 1, 2" ) );
}

TEST_F( ModulesTest, AFlagOfWhatIsOverIsAWarningUntilTheNextReading ) {
   put( 1, "flags", std::string( "rx_power_1 low warning, rx_power_1 low alarm" ) );
   EXPECT_THAT( seconds( 4 ),
                ElementsAre( "warning qsfp1-module rx_power flag: the module has told of a low "
                             "alarm, which is over on lane 1" ) );
   put( 1, "flags", std::string( "ok" ) );
   EXPECT_THAT( seconds( 1 ),
                ElementsAre( "clear qsfp1-module rx_power flag: good again after 4 s" ) );
}

TEST_F( ModulesTest, FlagsOfLanesSayWhatTheyMean ) {
   put( 1, "flags", std::string( "tx_fault 1, rx_los 1, rx_los 2, TEC fault" ) );
   EXPECT_THAT( seconds( 4 ),
                ElementsAre( "warning qsfp1-module TEC fault: the module tells: TEC fault",
                             "warning qsfp1-module rx_los: no light is received on lanes 1, 2",
                             "critical qsfp1-module tx_fault: the transmitter has failed on lane "
                             "1" ) );
}

TEST_F( ModulesTest, AModuleThatComesOrGoesIsNotedWithWhatItIs ) {
   pull();
   EXPECT_THAT( seconds( 5 ), ElementsAre( "note qsfp1 module: taken out: Orbis OQ, serial A" ) );
   report_[0].values[0].reading.state = State::Ok;
   EXPECT_THAT( seconds( 5 ), IsEmpty() ); // nobody knows yet which one it is
   plug( "B" );
   EXPECT_THAT( seconds( 5 ), ElementsAre( "note qsfp1 module: plugged: Orbis OQ, serial B" ) );
   EXPECT_EQ( monitor_.level(), Level::Ok );
   EXPECT_THAT( monitor_.causes(), IsEmpty() );
}

TEST_F( ModulesTest, APulledModuleTakesItsLimitsAndItsHistoryAlong ) {
   put( 1, "rx_power_2", 0.05, "mW" );
   seconds( 4 );
   pull();
   EXPECT_THAT(
      seconds( 1 ),
      ElementsAre( "clear qsfp1-module rx_power limit: its module was taken out after 4 s",
                   "note qsfp1 module: taken out: Orbis OQ, serial A" ) );
   plug( "B" );
   put( 1, "rx_power_2", 0.04, "mW" ); // what the next one has no threshold for
   EXPECT_THAT( seconds( 5 ), ElementsAre( "note qsfp1 module: plugged: Orbis OQ, serial B" ) );
   monitor_.describe( report_ );
   EXPECT_EQ( report_[1].health.value().values.back().lowest.value().number, 0.04 );
}

TEST_F( ModulesTest, AModuleThatWasSwappedUnseenIsNotedToo ) {
   plug( "B" );
   EXPECT_THAT( seconds( 1 ), ElementsAre( "note qsfp1 module: taken out: Orbis OQ, serial A",
                                           "note qsfp1 module: plugged: Orbis OQ, serial B" ) );
}

TEST_F( ModulesTest, AModuleThatCouldNotBeReadIsNotedByItsLastName ) {
   report_[1].state = State::Unreadable;
   for ( ValueReport &value : report_[1].values ) {
      value.reading.state = State::Unreadable;
      value.reading.value = {};
   }
   seconds( 5 );
   pull();
   const auto told = seconds( 1 );
   EXPECT_EQ( told.back(), "note qsfp1 module: taken out: Orbis OQ, serial A" );
}

// What was read before serve has begun is not over yet.
TEST_F( ModulesTest, ThresholdsCountFromTheFirstLookOn ) {
   Monitor monitor( board_, 3 );
   monitor.knows( 1, "rx_power_2", { .lowCritical = 0.1 } );
   put( 1, "rx_power_2", 0.05, "mW" );
   const Event before{ .cause = "qsfp1-module rx_power limit",
                       .object = "qsfp1-module",
                       .value = "rx_power_2",
                       .level = Level::Critical };
   monitor.resume( { before }, {} );
   std::vector<Event> told;
   for ( int i = 1; i < 6; ++i )
      for ( const Event &event :
            monitor.update( report_, {},
                            { std::chrono::steady_clock::time_point( std::chrono::seconds( i ) ),
                              WallTime( std::chrono::seconds( i ) ) } ) )
         told.push_back( event );
   EXPECT_THAT( told, IsEmpty() );
   EXPECT_EQ( monitor.causes().size(), 1u );
}

TEST_F( ModulesTest, ATransmitterThatIsOffHasNoLimitsOfTheBoardEither ) {
   BoardFiles::Board board = makeBoard();
   board.objects[1].health.limits["rx_power_1"] = { .lowCritical = 0.1 };
   Monitor monitor( board, 0 );
   monitor.knows( 1, "rx_power_1", { .ignored = true } );
   put( 1, "rx_power_1", 0., "mW" );
   monitor.update( report_, {}, { {}, WallTime( std::chrono::seconds( 1 ) ) } );
   EXPECT_THAT( monitor.causes(), IsEmpty() );
   monitor.knows( 1, "rx_power_1", {} );
   monitor.update( report_, {}, { {}, WallTime( std::chrono::seconds( 2 ) ) } );
   EXPECT_EQ( monitor.causes().size(), 1u );
}

TEST_F( ModulesTest, ALatchedLimitOfSeveralLanesIsAcknowledgedAtOnce ) {
   BoardFiles::Board board = makeBoard();
   for ( const char *lane : { "rx_power_1", "rx_power_2" } )
      board.objects[1].health.limits[lane] = { .lowCritical = 0.1, .latched = true };
   Monitor monitor( board, 0 );
   const auto update = [&]( int second ) {
      return monitor.update(
         report_, {},
         { std::chrono::steady_clock::time_point( std::chrono::seconds( second ) ),
           WallTime( std::chrono::seconds( second ) ) } );
   };
   put( 1, "rx_power_1", 0.05, "mW" );
   put( 1, "rx_power_2", 0.05, "mW" );
   update( 1 );
   put( 1, "rx_power_1", 0.5, "mW" );
   put( 1, "rx_power_2", 0.5, "mW" );
   update( 2 );
   ASSERT_EQ( monitor.causes().size(), 1u );
   monitor.acknowledge( "qsfp1-module rx_power limit", {} );
   update( 3 );
   EXPECT_THAT( monitor.causes(), IsEmpty() );
}

TEST_F( ModulesTest, ANoteIsNothingThatIsStillOpenAfterARestart ) {
   pull();
   Event note{ .what = Event::What::Note, .cause = "qsfp1 module", .object = "qsfp1" };
   monitor_.resume( { note }, {} );
   EXPECT_THAT( monitor_.causes(), IsEmpty() );
}

} // namespace
} // namespace Health
