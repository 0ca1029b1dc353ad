#include "host/session/Schedule.h"

#include "boardfiles/Board.h"

#include <gtest/gtest.h>

namespace Host {
namespace {

using namespace std::chrono_literals;
using BoardFiles::Kind;

// A fan, the system, and a sensor of the fan's driver object.
class ScheduleTest : public ::testing::Test {
 protected:
   template <class Type>
   std::optional<Type> next() {
      const auto command = schedule.next( actions, now );
      const auto *expected = command ? std::get_if<Type>( &*command ) : nullptr;
      return expected ? std::optional( *expected ) : std::nullopt;
   }
   void bringUp() {
      schedule.pluginLoaded();
      for ( const Kind kind : schedule.kinds() )
         schedule.kindReady( kind );
      for ( size_t i = 0; i < board.objects.size(); ++i ) {
         schedule.objectUp( i );
         schedule.objectRead( i );
      }
   }

   const BoardFiles::Board board{ .topology = "[ 5 ]",
                                  .objects = {
                                     { .kind = Kind::Fan, .name = "fan", .did = 1 },
                                     { .kind = Kind::System, .name = "system" },
                                     { .kind = Kind::TempSensor, .name = "t", .did = 1 } } };
   const Limits limits{ .period = 10s, .periods = { { Kind::Fan, 4s } } };
   Time now{ 1h };
   PendingActions actions;
   Schedule schedule{ board, limits, now };
};

TEST_F( ScheduleTest, LoadsThePluginWithTheTopologyFirst ) {
   EXPECT_EQ( next<LoadCommand>().value().topology, "[ 5 ]" );
   EXPECT_EQ( schedule.settled(), 0u );
   EXPECT_FALSE( schedule.roundDone() );
}

TEST_F( ScheduleTest, SettlesTheObjectsOfAKindThatFailedAndTriesTheKindAgain ) {
   schedule.pluginLoaded();
   EXPECT_EQ( next<InitCommand>().value().kind, Kind::Fan );
   schedule.kindFailed( Kind::Fan, now );
   EXPECT_EQ( schedule.settled(), 1u );
   EXPECT_TRUE( schedule.mustWait( 0, now ) );
   EXPECT_FALSE( schedule.isBackingOff( 0, now ) ); // its kind does
   EXPECT_EQ( next<InitCommand>().value().kind, Kind::System );
   now += 1s;
   EXPECT_FALSE( schedule.mustWait( 0, now ) );
   EXPECT_EQ( next<InitCommand>().value().kind, Kind::Fan );
}

TEST_F( ScheduleTest, WakesForTheShortestPeriodAndForTheNextTry ) {
   bringUp();
   next<ReadCommand>(); // starts the first rounds
   for ( size_t i = 0; i < board.objects.size(); ++i )
      schedule.objectRead( i );
   EXPECT_EQ( schedule.wakeAt( now ), now + 4s );
   schedule.objectFailed( 2, now );
   EXPECT_EQ( schedule.wakeAt( now ), now + 1s );
   EXPECT_EQ( schedule.wakeAt( now + 4s ), now + 10s );
   EXPECT_EQ( schedule.wakeAt( now + 10s ), now + 20s ); // a period later at the latest
}

TEST_F( ScheduleTest, BringsUpWhatAnotherObjectNeeds ) {
   const auto needed = [this]( size_t only ) {
      const Limits one{ .only = only };
      const Schedule forOne( board, one, now );
      std::vector<size_t> objects;
      for ( size_t i = 0; i < board.objects.size(); ++i )
         if ( !forOne.mustWait( i, now ) )
            objects.push_back( i );
      return objects;
   };
   EXPECT_EQ( needed( 0 ), ( std::vector<size_t>{ 0 } ) );
   EXPECT_EQ( needed( 1 ), ( std::vector<size_t>{ 0, 1 } ) ); // the system may use any device
   EXPECT_EQ( needed( 2 ), ( std::vector<size_t>{ 0, 2 } ) ); // they have one did
}

TEST_F( ScheduleTest, ReadsTheObjectsOfADeviceTogetherThatAreDue ) {
   using Objects = std::vector<size_t>;
   bringUp();
   EXPECT_EQ( next<ReadCommand>().value().objects, ( Objects{ 0, 2 } ) );
   schedule.objectRead( 0 );
   schedule.objectRead( 2 );
   EXPECT_EQ( next<ReadCommand>().value().objects, Objects{ 1 } );
   schedule.objectRead( 1 );
   now += 4s;
   EXPECT_EQ( next<ReadCommand>().value().objects, Objects{ 0 } ); // the sensor has a longer period
}

TEST( KeltScheduleTest, ARoundOfThe144ObjectsIs15Commands ) {
   BoardFiles::Findings findings;
   const auto kelt =
      BoardFiles::loadBoard( BOARDS "/kelt", BOARDS "/libOrbisDriversKelt.drivers.json", findings );
   const BoardFiles::Board board = BoardFiles::withoutModules( kelt.value() );
   const std::vector<BoardFiles::ObjectDescription> &objects = board.objects;
   EXPECT_EQ( objects.size(), 144u );
   const Limits limits{};
   Schedule schedule( board, limits, Time( 1h ) );
   schedule.pluginLoaded();
   for ( const Kind kind : schedule.kinds() )
      schedule.kindReady( kind );
   for ( size_t i = 0; i < objects.size(); ++i )
      schedule.objectUp( i );
   unsigned commands = 0;
   while ( const auto command = schedule.next( {}, Time( 1h ) ) ) {
      ++commands;
      for ( const size_t object : std::get<ReadCommand>( *command ).objects )
         schedule.objectRead( object );
   }
   EXPECT_EQ( commands, 15u );
   EXPECT_TRUE( schedule.roundDone() );
}

TEST( KeltScheduleTest, ATurnOfAModuleBeginsNoRound ) {
   BoardFiles::Findings findings;
   const auto board =
      BoardFiles::loadBoard( BOARDS "/kelt", BOARDS "/libOrbisDriversKelt.drivers.json", findings );
   const auto &objects = board.value().objects;
   Limits limits{};
   limits.periods[Kind::Module] = 10s;
   Schedule schedule( *board, limits, Time( 1h ) );
   schedule.pluginLoaded();
   for ( const Kind kind : schedule.kinds() )
      schedule.kindReady( kind );
   for ( size_t i = 0; i < objects.size(); ++i )
      schedule.objectUp( i );
   size_t modules = 0;
   for ( Time now( 1h ); now < Time( 1h + 20s ); now += 50ms ) {
      if ( now == Time( 1h + 5s ) )
         for ( size_t i = 0; i < objects.size(); ++i )
            if ( objects[i].kind == Kind::Module )
               schedule.modulePresenceIs( i, true, now );
      while ( const auto command = schedule.next( {}, now ) )
         for ( const size_t object : std::get<ReadCommand>( *command ).objects ) {
            schedule.objectRead( object );
            if ( objects[object].kind == Kind::Module ) {
               schedule.moduleRead( object, now );
               ++modules;
            }
         }
   }
   EXPECT_GE( modules, 86u );
   const size_t kinds = schedule.kinds().size() - 1; // without that of the modules
   EXPECT_EQ( schedule.rounds(), 20 * kinds );
}

TEST_F( ScheduleTest, AsksForAnActionBeforeReadings ) {
   bringUp();
   EXPECT_TRUE( next<ReadCommand>() );
   actions.add( 2, { .operation = "x" }, {} );
   EXPECT_EQ( next<ActCommand>().value().object, 2u );
}

TEST_F( ScheduleTest, HasNothingUpInANewChild ) {
   bringUp();
   schedule.childStarted();
   EXPECT_FALSE( schedule.isUp( 0 ) );
   EXPECT_FALSE( schedule.isReady( Kind::Fan ) );
   EXPECT_TRUE( next<LoadCommand>() );
}

} // namespace
} // namespace Host
