// What is told of a board, and in which order: a small board, its readings, and a clock turned by
// hand.
#include "health/Monitor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace MonitorTests {

namespace {

using namespace Health;
using BoardFiles::ChipPlace;
using BoardFiles::Kind;
using BoardFiles::ObjectDescription;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

const ChipPlace front{ "i2c:1", "0x70=1", 0x48 }, rear{ "i2c:1", "0x70=2", 0x48 },
   cpu{ "i2c:1", "", 0x4a }, supply{ "i2c:2", "", 0x58 }, alone{ "i2c:3", "", 0x4b };

ObjectDescription sensor( const char *name, const ChipPlace &chip ) {
   ObjectDescription object{ .kind = Kind::TempSensor, .name = name, .chips = { chip } };
   object.health.limits["temperature"] = { .highWarning = 60, .highCritical = 70, .hysteresis = 2 };
   return object;
}

BoardFiles::Board board() {
   BoardFiles::Board board;
   board.objects = { sensor( "front", front ), sensor( "rear", rear ), sensor( "cpu", cpu ),
                     sensor( "alone", alone ) };
   ObjectDescription slot{ .kind = Kind::Slot, .name = "slot" };
   slot.health.wanted = true;
   board.objects.push_back( slot );
   ObjectDescription psu{ .kind = Kind::Psu, .name = "psu", .chips = { supply } };
   psu.health.in = "slot";
   psu.health.limits["output_voltage"] = { .lowCritical = 11 };
   board.objects.push_back( psu );
   ObjectDescription status{ .kind = Kind::Smbus, .name = "psu-status", .chips = { supply } };
   status.health.in = "psu";
   board.objects.push_back( status );
   ObjectDescription fan{ .kind = Kind::Fan, .name = "fan" };
   fan.health.follows = BoardFiles::FollowRule{ .fan = "fan", .seconds = 5, .percent = 20 };
   board.objects.push_back( fan );
   board.rules = { { .name = "supplies", .members = { "psu" }, .wanted = 1, .needed = 1 } };
   return board;
}

class MonitorTest : public ::testing::Test {
 protected:
   MonitorTest() {
      for ( const char *name : { "front", "rear", "cpu", "alone" } )
         put( name, "temperature", 30.0, "°C" );
      put( "slot", "presence", std::string( "KP-850 frontToBackAirflow" ) );
      put( "psu", "power_ok", true );
      put( "psu", "output_voltage", 12.0, "V" );
      put( "psu-status", "status_registers", std::string( "0x79=0x0000" ) );
      put( "fan", "speed", int64_t{ 6000 }, "rpm" );
   }

   ObjectReport &object( const std::string &name ) {
      for ( ObjectReport &one : report_ )
         if ( one.name == name )
            return one;
      throw std::out_of_range( name );
   }
   void put( const std::string &name, const std::string &value, const Scalar &scalar,
             const std::string &unit = "" ) {
      ObjectReport &to = object( name );
      to.state = State::Ok;
      to.fault = {};
      for ( ValueReport &one : to.values )
         if ( one.reading.name == value ) {
            one.reading.value = scalar;
            one.reading.state = State::Ok;
            return;
         }
      to.values.push_back( { { .name = value, .unit = unit, .value = scalar } } );
   }
   void fail( const std::string &name ) {
      object( name ).state = State::Unreadable;
      object( name ).fault = { .status = 6 };
      for ( ValueReport &one : object( name ).values )
         one.reading.state = State::Unreadable;
   }
   void absent() { object( "slot" ).values[0].reading.state = State::Absent; }

   // What happens in so many seconds, each event as "critical psu absent: supplies, fan".
   std::vector<std::string> seconds( int count ) {
      std::vector<std::string> told;
      for ( int i = 0; i < count; ++i ) {
         ++second_;
         const Instant now{ std::chrono::steady_clock::time_point(
                               std::chrono::seconds( second_ ) ),
                            WallTime( std::chrono::seconds( second_ ) ) };
         for ( const Event &event : monitor_.update( report_, around_, now ) ) {
            words_ = event.words;
            told.push_back( fmt::format(
               "{} {}{}{}", event.what == Event::What::Clear ? "clear" : nameOf( event.level ),
               event.cause, event.explains.empty() ? "" : ": ",
               fmt::join( event.explains, ", " ) ) );
         }
      }
      return told;
   }

   BusEvidence &evidence( const std::string &bus ) {
      if ( !around_.evidence )
         around_.evidence.emplace();
      for ( BusEvidence &one : *around_.evidence )
         if ( one.bus == bus )
            return one;
      around_.evidence->push_back( { .bus = bus } );
      return around_.evidence->back();
   }
   void fails( const ChipPlace &chip, BusFault how ) {
      evidence( chip.bus ).chips.push_back( { chip.path, chip.address, 9, 3, how } );
   }

   const BoardFiles::Board board_ = board();
   BoardReport report_ = [this] {
      BoardReport report;
      for ( const ObjectDescription &object : board_.objects )
         report.push_back( { .name = object.name, .type = std::string( nameOf( object.kind ) ) } );
      return report;
   }();
   Surroundings around_;
   Monitor monitor_{ board_, 3 };
   int second_ = 0;
   std::string words_; // of the last event
};

TEST_F( MonitorTest, NothingIsToldOfAGoodBoard ) {
   EXPECT_THAT( seconds( 10 ), IsEmpty() );
   EXPECT_EQ( monitor_.level(), Level::Ok );
}

TEST_F( MonitorTest, ACrossedLimitIsToldAtOnceWithItsNumbers ) {
   put( "front", "temperature", 120.0 );
   EXPECT_THAT( seconds( 1 ), ElementsAre( "critical front temperature limit" ) );
   EXPECT_EQ( words_, "120 °C is above the critical limit of 70 °C" );
   EXPECT_THAT( seconds( 5 ), IsEmpty() );
   put( "front", "temperature", 65.0 );
   EXPECT_THAT( seconds( 5 ), ElementsAre( "warning front temperature limit" ) );
   put( "front", "temperature", 58.0 );
   EXPECT_THAT( seconds( 5 ), ElementsAre( "clear front temperature limit" ) );
   EXPECT_EQ( words_, "good again after 11 s" );
}

TEST_F( MonitorTest, AnAlarmIsNotClearBecauseNobodyLooks ) {
   put( "front", "temperature", 75.0 );
   seconds( 1 );
   fails( front, BusFault::NoAcknowledge );
   fail( "front" );
   EXPECT_THAT( seconds( 5 ), ElementsAre( "warning front silent" ) );
   EXPECT_EQ( monitor_.causes().size(), 2u );
   around_.evidence.reset();
   put( "front", "temperature", 30.0 );
   EXPECT_THAT( seconds( 1 ),
                ElementsAre( "clear front silent", "clear front temperature limit" ) );
}

TEST_F( MonitorTest, AnAbsentModuleExplainsWhatIsOnIt ) {
   fails( supply, BusFault::NoAcknowledge );
   fail( "psu" );
   fail( "psu-status" );
   EXPECT_THAT( seconds( 2 ), IsEmpty() ); // it may be the module
   absent();
   EXPECT_THAT( seconds( 5 ), ElementsAre( "critical slot absent: psu, psu-status, supplies" ) );
   put( "slot", "presence", std::string( "KP-850" ) );
   put( "psu", "power_ok", true );
   put( "psu", "output_voltage", 12.0 );
   put( "psu-status", "status_registers", std::string( "0x79=0x0000" ) );
   EXPECT_THAT( seconds( 5 ), ElementsAre( "clear slot absent: psu, psu-status, supplies" ) );
}

TEST_F( MonitorTest, CountsTheGoodMembersOfEachRule ) {
   EXPECT_THAT( monitor_.rules(), IsEmpty() );
   const auto good = [this] {
      seconds( 1 );
      return std::pair( monitor_.rules().at( 0 ).good, monitor_.rules().at( 0 ).unknown );
   };
   EXPECT_EQ( good(), std::pair( size_t{ 1 }, size_t{ 0 } ) );
   fail( "psu" );
   EXPECT_EQ( good(), std::pair( size_t{ 0 }, size_t{ 1 } ) );
   absent();
   EXPECT_EQ( good(), std::pair( size_t{ 0 }, size_t{ 0 } ) );
}

TEST_F( MonitorTest, WhatStandsInASlotThatMayBeEmptyIsNoFault ) {
   BoardFiles::Board another = board_;
   another.objects[4].health.wanted = false;
   another.rules.clear();
   Monitor monitor( another, 3 );
   absent();
   fail( "psu" );
   EXPECT_THAT( monitor.update( report_, {}, {} ), IsEmpty() );
}

TEST_F( MonitorTest, ASilentMultiplexerExplainsWhatIsBehindIt ) {
   fails( { "i2c:1", "", 0x70 }, BusFault::NoAcknowledge );
   fail( "front" );
   fail( "rear" );
   EXPECT_THAT( seconds( 3 ), IsEmpty() );
   EXPECT_THAT( seconds( 3 ),
                ElementsAre( "critical multiplexer 0x70 on i2c:1 silent: front, rear" ) );
   EXPECT_EQ( words_,
              "the multiplexer 0x70 on i2c:1 doesn't acknowledge: nothing behind it can be read" );
}

TEST_F( MonitorTest, ASilentChipIsToldWithTheObjectThatItMakes ) {
   fails( front, BusFault::Pec );
   fail( "front" );
   EXPECT_THAT( seconds( 5 ), ElementsAre( "warning front silent" ) );
   EXPECT_EQ( words_,
              "its chip 0x48 behind 0x70=1 on i2c:1 answers with a wrong packet error code" );
}

TEST_F( MonitorTest, AChipOfSeveralObjectsExplainsThemAll ) {
   fails( supply, BusFault::NoAcknowledge );
   fail( "psu" );
   fail( "psu-status" );
   EXPECT_THAT( seconds( 5 ),
                ElementsAre( "warning chip 0x58 on i2c:2 silent: psu, psu-status, supplies" ) );
}

TEST_F( MonitorTest, AHeldSegmentExplainsTheWholeBus ) {
   for ( const char *name : { "front", "rear", "cpu" } )
      fail( name );
   for ( const ChipPlace &chip : { front, rear, cpu } )
      fails( chip, BusFault::HeldLow );
   evidence( "i2c:1" ).isHeld = true;
   evidence( "i2c:1" ).heldPath = "0x70=1";
   EXPECT_THAT( seconds( 5 ),
                ElementsAre( "critical bus i2c:1 held behind 0x70=1: front, rear, cpu" ) );
   EXPECT_THAT( words_, HasSubstr( "its multiplexer can't be released" ) );
}

// Its chips were not asked then: the server leaves the whole bus alone.
TEST_F( MonitorTest, AQuarantinedBusIsTheOneCauseWhateverItsChipsDidBefore ) {
   fail( "front" );
   fail( "cpu" );
   evidence( "i2c:1" ).quarantined = { { "0x70=1", true } };
   EXPECT_THAT( seconds( 5 ), ElementsAre( "critical bus i2c:1 held behind 0x70=1: front, cpu" ) );
}

TEST_F( MonitorTest, AQuarantinedSegmentExplainsOnlyWhatIsBehindIt ) {
   fail( "front" );
   fail( "cpu" );
   fails( cpu, BusFault::NoAcknowledge );
   evidence( "i2c:1" ).quarantined = { { "0x70=1", false } };
   EXPECT_THAT( seconds( 5 ), UnorderedElementsAre( "critical bus i2c:1 segment 0x70=1: front",
                                                    "warning cpu silent" ) );
}

TEST_F( MonitorTest, ABusWithoutAnAnswerIsOneCause ) {
   for ( const char *name : { "front", "rear", "cpu" } )
      fail( name );
   fails( cpu, BusFault::Other );
   EXPECT_THAT( seconds( 5 ), ElementsAre( "critical bus i2c:1 silent: front, rear, cpu" ) );
}

TEST_F( MonitorTest, WhatAnotherCauseHidesIsNeitherToldAgainNorCleared ) {
   fails( front, BusFault::NoAcknowledge );
   fail( "front" );
   EXPECT_THAT( seconds( 5 ), ElementsAre( "warning front silent" ) );
   for ( const char *name : { "rear", "cpu" } )
      fail( name );
   fails( cpu, BusFault::Other );
   EXPECT_THAT( seconds( 5 ), ElementsAre( "critical bus i2c:1 silent: front, rear, cpu" ) );
   EXPECT_TRUE( monitor_.causes()[1].isHidden );
   around_.evidence.reset();
   fails( front, BusFault::NoAcknowledge );
   for ( const char *name : { "rear", "cpu" } )
      put( name, "temperature", 30.0 );
   EXPECT_THAT( seconds( 5 ), ElementsAre( "clear bus i2c:1 silent: front, rear, cpu" ) );
   EXPECT_FALSE( monitor_.causes()[0].isHidden );
   around_.evidence.reset();
   put( "front", "temperature", 30.0 );
   EXPECT_THAT( seconds( 5 ), ElementsAre( "clear front silent" ) );
}

TEST_F( MonitorTest, AFaultThatAnotherHidesIsToldWhenThatIsLifted ) {
   for ( const char *name : { "front", "rear", "cpu" } )
      fail( name );
   fails( cpu, BusFault::Other );
   seconds( 5 );
   around_.evidence.reset();
   fails( front, BusFault::NoAcknowledge );
   for ( const char *name : { "rear", "cpu" } )
      put( name, "temperature", 30.0 );
   EXPECT_THAT( seconds( 5 ),
                ElementsAre( "clear bus i2c:1 silent: front, rear, cpu", "warning front silent" ) );
}

TEST_F( MonitorTest, WithoutTheServersWordSeveralCausesAreNamed ) {
   fail( "front" );
   EXPECT_THAT( seconds( 5 ), ElementsAre( "warning chip 0x48 behind 0x70=1 on i2c:1 perhaps" ) );
   EXPECT_EQ( words_, "can't be read: the chip 0x48 behind 0x70=1 on i2c:1 (the server doesn't "
                      "tell which)" );
}

TEST_F( MonitorTest, WithoutTheServersWordTheOnlyChipOfABusMayAlsoBeTheBus ) {
   fail( "alone" );
   seconds( 5 );
   EXPECT_EQ( words_, "can't be read: the chip 0x4b on i2c:3, or the bus i2c:3 (the server doesn't "
                      "tell which)" );
}

TEST_F( MonitorTest, WithoutTheServersWordTheMultiplexerIsNamedWhenNothingBehindItAnswers ) {
   fail( "front" );
   fail( "rear" );
   EXPECT_THAT( seconds( 5 ),
                ElementsAre( "warning multiplexer 0x70 on i2c:1 perhaps: front, rear" ) );
   EXPECT_THAT( words_, HasSubstr( ", or the multiplexer 0x70 on i2c:1" ) );
}

TEST_F( MonitorTest, AServerThatIsGoneExplainsEverything ) {
   around_.server = "no server listens at /run/orbis/smbus.sock";
   for ( const char *name : { "front", "rear", "cpu", "alone", "psu", "psu-status", "fan" } )
      fail( name );
   EXPECT_THAT( seconds( 5 ), ElementsAre( "critical server: front, rear, cpu, alone, psu, "
                                           "psu-status, fan, supplies" ) );
}

TEST_F( MonitorTest, AnEndedPlugInExplainsWhatCantBeRead ) {
   around_.plugIn = "the plug-in's process ended: signal 9";
   fail( "front" );
   EXPECT_THAT( seconds( 5 ), ElementsAre( "critical plug-in: front" ) );
   around_.plugIn.clear();
   put( "front", "temperature", 30.0 );
   EXPECT_THAT( seconds( 5 ), ElementsAre( "clear plug-in: front" ) );
}

TEST_F( MonitorTest, WhatTheWiringDoesNotExplainIsACauseByItself ) {
   around_.evidence.emplace();
   fail( "front" );
   EXPECT_THAT( seconds( 5 ), ElementsAre( "warning front unreadable" ) );
   EXPECT_EQ( words_, "can't be read: status 6 (transaction)" );
}

TEST_F( MonitorTest, ASupplyWithoutMainsExplainsItsZeros ) {
   put( "psu", "output_voltage", 0.0 );
   put( "psu", "power_ok", false );
   put( "psu-status", "status_registers", std::string( "0x79=0x2848 0x7c=0x18" ) );
   EXPECT_THAT( seconds( 5 ), ElementsAre( "critical psu input lost: supplies" ) );
   EXPECT_THAT( words_, HasSubstr( "input undervoltage" ) );
}

TEST_F( MonitorTest, ARotorThatDoesNotFollowIsAFaultAfterItsTime ) {
   put( "fan", "target", int64_t{ 12000 }, "rpm" );
   object( "fan" ).values[1].age = 4;
   EXPECT_THAT( seconds( 1 ), IsEmpty() );
   object( "fan" ).values[1].age = 5;
   EXPECT_THAT( seconds( 1 ), ElementsAre( "critical fan follows" ) );
   EXPECT_EQ( words_, "runs at 6000 rpm, 12000 rpm was set" );
   put( "fan", "speed", int64_t{ 11000 } );
   EXPECT_THAT( seconds( 1 ), ElementsAre( "clear fan follows" ) );
}

TEST_F( MonitorTest, AFaultOfAModuleThatNeedNotBeThereGoesWithTheModule ) {
   BoardFiles::Board another = board_;
   another.objects[4].health.wanted = false;
   another.rules.clear();
   Monitor monitor( another, 0 );
   put( "psu", "output_voltage", 5.0 );
   EXPECT_EQ( monitor.update( report_, {}, {} ).size(), 1u );
   absent();
   EXPECT_EQ( monitor.update( report_, {}, {} ).size(), 1u );
   EXPECT_THAT( monitor.causes(), IsEmpty() );
   EXPECT_EQ( monitor.level(), Level::Ok );
}

TEST_F( MonitorTest, WhatGetsWorseHasToBeAcknowledgedAgain ) {
   put( "front", "temperature", 65.0 );
   seconds( 1 );
   EXPECT_TRUE( monitor_.acknowledge( "front temperature limit", {} ) );
   seconds( 1 );
   EXPECT_TRUE( monitor_.causes()[0].isAcknowledged );
   put( "front", "temperature", 75.0 );
   EXPECT_THAT( seconds( 1 ), ElementsAre( "critical front temperature limit" ) );
   EXPECT_FALSE( monitor_.causes()[0].isAcknowledged );
}

TEST_F( MonitorTest, TheLimitsOfAModuleGoWithTheModule ) {
   const auto deviceSays = [&]( double limit ) {
      monitor_.knows( 6, "output_voltage", { .highCritical = limit } );
   };
   seconds( 1 );
   deviceSays( 13 );
   absent();
   seconds( 5 );
   put( "slot", "presence", std::string( "KP-1100" ) );
   seconds( 1 );
   deviceSays( 15 ); // the next module knows better
   put( "psu", "output_voltage", 14.0 );
   EXPECT_THAT( seconds( 5 ), IsEmpty() );
}

TEST_F( MonitorTest, ALatchedLimitStaysUntilItIsAcknowledged ) {
   BoardFiles::Board latched = board_;
   latched.objects[0].health.limits["temperature"].latched = true;
   Monitor monitor( latched, 3 );
   put( "front", "temperature", 65.0 );
   monitor.update( report_, {}, {} );
   put( "front", "temperature", 30.0 );
   EXPECT_THAT( monitor.update( report_, {}, {} ), IsEmpty() );
   EXPECT_FALSE( monitor.acknowledge( "front", {} ) );
   EXPECT_TRUE( monitor.acknowledge( "front temperature limit", {} ) );
   EXPECT_EQ( monitor.update( report_, {}, {} ).size(), 1u );
   EXPECT_EQ( monitor.level(), Level::Ok );
}

TEST_F( MonitorTest, WhatIsOpenInTheJournalIsNotToldAgainAndIsClearedOnceItIsGood ) {
   put( "front", "temperature", 75.0 );
   fails( { "i2c:1", "", 0x70 }, BusFault::NoAcknowledge );
   fail( "rear" );
   std::vector<Event> journal;
   const auto record = [&]( Monitor &monitor, int second ) {
      const Instant now{ std::chrono::steady_clock::time_point( std::chrono::seconds( second ) ),
                         WallTime( std::chrono::seconds( second ) ) };
      const auto events = monitor.update( report_, around_, now );
      journal.insert( journal.end(), events.begin(), events.end() );
      return events.size();
   };
   for ( int second = 1; second < 6; ++second )
      record( monitor_, second );
   ASSERT_EQ( journal.size(), 2u );
   Monitor next( board_, 3 );
   next.resume( journal, { {}, WallTime( std::chrono::seconds( 10 ) ) } );
   EXPECT_EQ( next.causes().size(), 2u );
   EXPECT_EQ( next.causes()[0].since, WallTime( std::chrono::seconds( 1 ) ) );
   for ( int second = 10; second < 16; ++second )
      EXPECT_EQ( record( next, second ), 0u );
   put( "front", "temperature", 30.0 );
   put( "rear", "temperature", 30.0 );
   EXPECT_EQ( record( next, 17 ), 2u );
   EXPECT_TRUE( next.causes().empty() );
   Monitor last( board_, 3 );
   last.resume( journal, {} );
   EXPECT_TRUE( last.causes().empty() );
}

TEST_F( MonitorTest, AnAcknowledgementInTheJournalHoldsForWhatWasSeen ) {
   const auto event = []( Event::What what, Level level ) {
      return Event{ .what = what, .cause = "front temperature limit", .level = level };
   };
   const Event seen = event( Event::What::Acknowledged, Level::Warning );
   monitor_.resume( { event( Event::What::Set, Level::Warning ), seen }, {} );
   EXPECT_TRUE( monitor_.causes()[0].isAcknowledged );
   monitor_.resume( { event( Event::What::Set, Level::Critical ) }, {} );
   EXPECT_FALSE( monitor_.causes()[0].isAcknowledged );
}

TEST_F( MonitorTest, NothingIsSaidToBeGoodBeforeThereWasTimeToFindOut ) {
   EXPECT_EQ( monitor_.level(), Level::Indeterminate );
   fail( "front" );
   around_.evidence.emplace();
   seconds( 1 );
   EXPECT_EQ( monitor_.level(), Level::Indeterminate );
   seconds( 5 );
   EXPECT_EQ( monitor_.level(), Level::Warning );
}

TEST_F( MonitorTest, ASingleValueIsExplainedByTheWiringToo ) {
   fails( { "i2c:1", "", 0x70 }, BusFault::NoAcknowledge );
   object( "front" ).values[0].reading.state = State::Unreadable;
   EXPECT_THAT( seconds( 5 ), ElementsAre( "critical multiplexer 0x70 on i2c:1 silent: front" ) );
}

TEST_F( MonitorTest, DescribesEachObjectAndValue ) {
   put( "front", "temperature", 75.0 );
   absent();
   seconds( 1 );
   monitor_.describe( report_ );
   EXPECT_EQ( object( "front" ).health->level, Level::Critical );
   EXPECT_EQ( object( "front" ).health->cause, "front temperature limit" );
   EXPECT_EQ( object( "front" ).health->values[0].highest->number, 75 );
   EXPECT_EQ( object( "psu" ).health->level, Level::Indeterminate );
   EXPECT_EQ( object( "psu" ).health->cause, "slot absent" );
   EXPECT_EQ( object( "psu" ).health->values[0].level, Level::Indeterminate );
   EXPECT_EQ( object( "rear" ).health->level, Level::Ok );
}

} // namespace

} // namespace MonitorTests
