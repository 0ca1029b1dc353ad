// How a cage and the memory of its module come together.
#include "host/session/CageModules.h"
#include "host/session/Supervisor.h"
#include "optics/ImageFile.h"

#include <gmock/gmock.h>

namespace Host {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SupervisorModulesTest : public ::testing::Test {
 protected:
   static constexpr size_t cage = 0, module = 1;

   static BoardFiles::Board makeBoard() {
      BoardFiles::Board board{
         .objects = { { .kind = BoardFiles::Kind::Xcvr, .name = "qsfp1", .did = 51 },
                      { .kind = BoardFiles::Kind::Module, .name = "qsfp1-module", .did = 501 } }
      };
      board.objects[module].health.in = "qsfp1";
      return board;
   }
   // A flat QSFP28 with a monitor of its temperature.
   static Optics::Image memoryOf( const std::string &serial, uint8_t celsius ) {
      std::vector<uint8_t> bytes( 256 );
      bytes[0] = bytes[128] = 0x11;
      bytes[1] = 8;
      bytes[2] = 0x04;
      bytes[22] = celsius;
      bytes[220] = 0x20;
      std::copy( serial.begin(), serial.end(), bytes.begin() + 196 );
      return Optics::imageOfFile( bytes, {} );
   }

   // Carries out what there is to do. Each module is read as `reads_` says.
   std::vector<std::string> run() {
      std::vector<std::string> modules;
      while ( const auto command = supervisor_.next( now_ ) ) {
         if ( const auto *read = std::get_if<ReadCommand>( &*command ) )
            for ( const size_t object : read->objects ) {
               if ( object == cage ) {
                  hear( Reading{ .name = "presence",
                                 .state = isThere_ ? cageState_ : State::Absent,
                                 .value = true } );
               } else {
                  modules.emplace_back( read->fresh.empty() ? "read" : "read fresh" );
                  readModule();
               }
               hear( Done{} );
            }
         else
            hear( Done{} );
      }
      return modules;
   }
   void readModule() {
      if ( isBusy_ ) {
         hear( Reading{
            .name = "memory", .state = State::Unreadable, .fault = { .words = "no answer" } } );
         return;
      }
      hear( ModuleMemory{ memoryOf( serial_, celsius_ ), true } );
      hear( Reading{ .name = "memory" } );
   }
   void hear( const Event &event ) { supervisor_.heard( event, now_ ); }
   std::vector<std::string> seconds( int count ) {
      std::vector<std::string> modules;
      for ( int i = 0; i < count; ++i ) {
         now_ += 1s;
         for ( const std::string &one : run() )
            modules.push_back( one );
      }
      return modules;
   }
   ObjectReport report() const { return supervisor_.report( now_ ).at( module ); }
   Scalar value( const std::string &name ) const {
      const ObjectReport object = report();
      const ValueReport *found = object.find( name );
      return found ? found->reading.value : Scalar();
   }

   const BoardFiles::Board board_ = makeBoard();
   Time now_{ 1h };
   Supervisor supervisor_{ board_, Limits{ .periods = { { BoardFiles::Kind::Module, 10s } } },
                           now_ };
   bool isThere_ = true, isBusy_ = false;
   State cageState_ = State::Ok;
   std::string serial_ = "A";
   uint8_t celsius_ = 40;
};

TEST_F( SupervisorModulesTest, ReadsAModuleThatIsThereAndThenInItsOwnPeriod ) {
   EXPECT_THAT( run(), ElementsAre( "read fresh" ) );
   EXPECT_EQ( value( "temperature" ), Scalar( 40. ) );
   EXPECT_EQ( value( "serial" ), Scalar( std::string( "A" ) ) );
   EXPECT_EQ( report().state, State::Ok );
   const auto reads = seconds( 30 );
   EXPECT_THAT( reads, ElementsAre( "read", "read", "read" ) );
   const auto modules = modulesOf( board_, supervisor_, supervisor_.report( now_ ), now_ );
   ASSERT_EQ( modules.size(), 1u );
   EXPECT_EQ( modules[0].cage, "qsfp1" );
   EXPECT_EQ( modules[0].module.value().serial, "A" );
   EXPECT_LT( modules[0].age, 10 );
}

TEST_F( SupervisorModulesTest, AnEmptyCageHasNoModuleAndIsNotRead ) {
   isThere_ = false;
   EXPECT_THAT( run(), IsEmpty() );
   EXPECT_THAT( seconds( 30 ), IsEmpty() );
   EXPECT_EQ( report().state, State::Absent );
   EXPECT_THAT( report().values, IsEmpty() );
   EXPECT_EQ( supervisor_.module( module ), nullptr );
}

TEST_F( SupervisorModulesTest, ASwappedModuleIsReadFromTheBeginningAfterItHasStarted ) {
   run();
   isThere_ = false;
   seconds( 1 );
   EXPECT_EQ( report().state, State::Absent );
   EXPECT_EQ( supervisor_.module( module ), nullptr );
   isThere_ = true;
   serial_ = "B";
   EXPECT_THAT( seconds( 2 ), IsEmpty() );
   EXPECT_EQ( report().state, State::Absent ); // nothing is known of the new one yet
   EXPECT_THAT( seconds( 1 ), ElementsAre( "read fresh" ) );
   EXPECT_EQ( value( "serial" ), Scalar( std::string( "B" ) ) );
}

TEST_F( SupervisorModulesTest, ABusyModuleKeepsItsValuesUntilItHasMissedThreeTimes ) {
   run();
   isBusy_ = true;
   celsius_ = 50;
   std::vector<State> states;
   for ( int reads = 0; reads < 3; reads += static_cast<int>( seconds( 1 ).size() ) )
      states.push_back( report().state );
   EXPECT_THAT( states, ::testing::Each( State::Ok ) );
   EXPECT_EQ( report().state, State::Unreadable );
   EXPECT_EQ( report().fault.words, "no answer" );
   isBusy_ = false;
   seconds( 10 );
   EXPECT_EQ( value( "temperature" ), Scalar( 50. ) );
   EXPECT_EQ( report().state, State::Ok );
}

// Reading has cleared them.
TEST_F( SupervisorModulesTest, FlagsOfAPartThatCouldBeReadAreTold ) {
   run();
   for ( std::vector<std::string> reads; reads.empty(); ) {
      now_ += 1s;
      while ( const auto command = supervisor_.next( now_ ) ) {
         if ( std::get<ReadCommand>( *command ).objects.front() == module ) {
            reads.emplace_back( "read" );
            ModuleMemory part;
            const std::vector<uint8_t> highAlarm{ 0x80 };
            part.image.put( {}, 6, highAlarm );
            hear( part );
            hear( Reading{ .name = "memory", .state = State::Unreadable } );
         }
         hear( Done{} );
      }
   }
   EXPECT_EQ( value( "flags" ), Scalar( std::string( "temperature high alarm" ) ) );
   EXPECT_EQ( value( "temperature" ), Scalar( 40. ) );
   // All of the memory is read now, and has no flag any more.
   EXPECT_THAT( seconds( 1 ), ElementsAre( "read" ) );
   EXPECT_EQ( value( "flags" ), Scalar( std::string( "temperature high alarm" ) ) );
   seconds( 10 );
   EXPECT_EQ( value( "flags" ), Scalar( std::string( "ok" ) ) );
}

TEST_F( SupervisorModulesTest, FlagsOfAPartOutlastAModuleThatIsNotReady ) {
   run();
   // What is read next: a part with a flag, then all of a module that is not ready.
   for ( const bool isPart : { true, false } )
      for ( bool isRead = false; !isRead; now_ += 1s )
         while ( const auto command = supervisor_.next( now_ ) ) {
            isRead |= std::get<ReadCommand>( *command ).objects.front() == module;
            if ( std::get<ReadCommand>( *command ).objects.front() == module ) {
               ModuleMemory memory;
               const std::vector<uint8_t> notReady{ 0x05 }, highAlarm{ 0x80 };
               memory.image.put( {}, isPart ? 6 : 2, isPart ? highAlarm : notReady );
               hear( memory );
               hear( Reading{ .name = "memory", .state = isPart ? State::Unreadable : State::Ok } );
            }
            hear( Done{} );
         }
   while ( seconds( 1 ).empty() ) // it is ready again
      ;
   EXPECT_EQ( value( "flags" ), Scalar( std::string( "temperature high alarm" ) ) );
}

// A round that takes long, or a cage that can't be read, may hide a swap.
TEST_F( SupervisorModulesTest, AModuleThatMayHaveBeenSwappedIsReadFromTheBeginning ) {
   run();
   cageState_ = State::Unreadable;
   seconds( 1 );
   cageState_ = State::Ok;
   serial_ = "B";
   EXPECT_THAT( seconds( 10 ), ElementsAre( "read fresh" ) );
   EXPECT_EQ( value( "serial" ), Scalar( std::string( "B" ) ) );
   isBusy_ = true;
   for ( size_t reads = 0; reads < 3; reads += seconds( 1 ).size() )
      ;
   isBusy_ = false;
   EXPECT_THAT( seconds( 10 ), ElementsAre( "read fresh" ) );
}

TEST_F( SupervisorModulesTest, WhatFollowsNoStandardIsUnreadable ) {
   const std::vector<uint8_t> ones{ 0xFF, 0xFF, 0xFF };
   while ( const auto command = supervisor_.next( now_ ) ) {
      if ( const auto *read = std::get_if<ReadCommand>( &*command );
           read && read->objects.front() == cage ) {
         hear( Reading{ .name = "presence", .value = true } );
      } else if ( read ) {
         ModuleMemory memory{ .begins = true };
         memory.image.put( {}, 0, ones );
         hear( memory );
         hear( Reading{ .name = "memory" } );
      }
      hear( Done{} );
      now_ += 1s;
      if ( report().state == State::Unreadable && report().fault.words.starts_with( "its" ) )
         break;
   }
   EXPECT_EQ( report().fault.words, "its memory follows none of the known standards" );
}

} // namespace
} // namespace Host
