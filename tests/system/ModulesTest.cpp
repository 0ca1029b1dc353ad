// The modules in the cages, from the simulated memory through server and plug-in to what a user is
// told.
#include "WatchedBoard.h"
#include "host/session/CageModules.h"
#include "optics/Decode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Host::CageModule;
using Host::State;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

std::vector<CageModule> modulesOf( const BoardInOneProcess &board ) {
   return Host::modulesOf( board.board(), board.supervisor(), board.report(), board.now() );
}

CageModule moduleIn( const BoardInOneProcess &board, const std::string &cage ) {
   for ( CageModule &module : modulesOf( board ) )
      if ( module.cage == cage )
         return std::move( module );
   throw std::out_of_range( cage );
}

// A cage with its module.
struct OneCage : BoardInOneProcess {
   explicit OneCage( const std::string &cage ) : BoardInOneProcess( { cage, cage + "-module" } ) {
      start();
   }
   void seconds( int count ) {
      for ( int i = 0; i < count; ++i )
         round();
   }
};

TEST( SystemModulesTest, EveryPresentModuleOfTheBoardIsReadAndGood ) {
   WatchedBoard board;
   for ( int i = 0; i < 12; ++i )
      board.round();
   size_t present = 0, withMonitors = 0;
   for ( const CageModule &module : modulesOf( board.board() ) ) {
      if ( module.state == State::Absent )
         continue;
      ++present;
      ASSERT_TRUE( module.module ) << module.cage;
      EXPECT_EQ( module.state, State::Ok ) << module.cage;
      EXPECT_THAT( module.module->vendor, HasSubstr( "Orbis" ) ) << module.cage;
      EXPECT_THAT( module.module->findings, IsEmpty() ) << module.cage;
      EXPECT_EQ( Host::worstOf( *module.module ), "" ) << module.cage;
      withMonitors += module.module->monitors.empty() ? 0 : 1;
   }
   EXPECT_EQ( present, 58u );
   EXPECT_GT( withMonitors, 50u );
   EXPECT_THAT( board.told(), IsEmpty() );
}

// The addresses 0x50 and 0x51 are two devices of the topology.
TEST( SystemModulesTest, TheHalvesOfEachSfpDiffer ) {
   WatchedBoard board;
   size_t count = 0;
   for ( const CageModule &module : modulesOf( board.board() ) ) {
      const auto &regions = module.image.regions();
      const auto first = regions.find( { 0x50 } ), second = regions.find( { 0x51 } );
      if ( first == regions.end() || second == regions.end() )
         continue;
      ++count;
      EXPECT_NE( first->second, second->second ) << module.cage;
   }
   EXPECT_GT( count, 25u );
}

TEST( SystemModulesTest, AnAgingLaserCrossesItsWarningAndThenItsAlarmByItsOwnThresholds ) {
   WatchedBoard board;
   board.sim( { "set", "qsfp5-eeprom.lane2", "age", "40" } );
   for ( int i = 0; i < 15; ++i )
      board.round();
   EXPECT_THAT( board.told(), ElementsAre( "warning qsfp5-module tx_bias limit" ) );
   EXPECT_THAT( board.wordsOf( "qsfp5-module tx_bias limit" ),
                HasSubstr( "above the warning limit of 70 mA on lane 2" ) );
   board.sim( { "set", "qsfp5-eeprom.lane2", "age", "80" } );
   for ( int i = 0; i < 15; ++i )
      board.round();
   EXPECT_THAT( board.told(), Contains( "critical qsfp5-module tx_bias limit" ) );
   EXPECT_THAT( board.wordsOf( "qsfp5-module tx_bias limit" ),
                HasSubstr( "above the critical limit of 78 mA on lane 2" ) );
}

// A CMIS module has its lanes on a page that is chosen in each reading.
TEST( SystemModulesTest, AModuleThatIsPulledWhileItsPageIsSwitchedIsOneEventAndNoWrongValue ) {
   WatchedBoard board;
   for ( const char *other : { "qsfp37", "qsfp38" } )
      board.board().pull( other );
   for ( int i = 0; i < 5; ++i )
      board.round();
   ASSERT_THAT( board.told(), ElementsAre( "note qsfp37 module", "note qsfp38 module" ) );
   const CageModule before = moduleIn( board.board(), "qsfp36" );
   const auto reportBefore = board.board().object( "qsfp36-module" ).values;
   bool isPulled = false;
   board.board().missWhere( [&]( const Bus::Transfer &transfer ) {
      const bool isChoice = transfer.address == 0x50 && transfer.kind == Bus::Transfer::Kind::Write;
      if ( isChoice && !isPulled ) { // it never comes to the module
         isPulled = true;
         board.board().pull( "qsfp36" );
      }
      return false;
   } );
   for ( int i = 0; i < 15 && !isPulled; ++i )
      board.round();
   ASSERT_TRUE( isPulled );
   for ( const Host::ValueReport &value : board.board().object( "qsfp36-module" ).values )
      EXPECT_THAT( reportBefore, Contains( ::testing::Truly( [&]( const Host::ValueReport &old ) {
                      return old.reading.name == value.reading.name &&
                             old.reading.value == value.reading.value;
                   } ) ) )
         << value.reading.name;
   for ( int i = 0; i < 15; ++i )
      board.round();
   EXPECT_THAT( board.told(),
                ElementsAre( "note qsfp37 module", "note qsfp38 module", "note qsfp36 module" ) );
   EXPECT_EQ( moduleIn( board.board(), "qsfp36" ).state, State::Absent );
   EXPECT_FALSE( moduleIn( board.board(), "qsfp36" ).module );
}

TEST( SystemModulesTest, ASwappedModuleIsTheNewOneOnceItHasStarted ) {
   OneCage board( "qsfp1" );
   ASSERT_EQ( moduleIn( board, "qsfp1" ).state, State::Ok );
   board.pull( "qsfp1" );
   board.seconds( 2 );
   EXPECT_EQ( moduleIn( board, "qsfp1" ).state, State::Absent );
   board.insert( "qsfp1" );
   board.seconds( 1 );
   EXPECT_EQ( moduleIn( board, "qsfp1" ).state, State::Absent );
   board.seconds( 4 );
   EXPECT_EQ( moduleIn( board, "qsfp1" ).state, State::Ok );
   EXPECT_TRUE( moduleIn( board, "qsfp1" ).module );
}

// Pages are chosen only while the identity is read, or where lanes are on a page.
TEST( SystemModulesTest, AQsfpsPageIsLeftAloneOnceItIsKnown ) {
   OneCage board( "qsfp1" );
   unsigned writes = 0;
   board.missWhere( [&]( const Bus::Transfer &transfer ) {
      writes += transfer.address == 0x50 && transfer.data.size() > 1 ? 1 : 0;
      return false;
   } );
   board.seconds( 60 );
   EXPECT_EQ( writes, 0u );
}

// One acknowledge in fifty gets lost. Each failed transfer is repeated.
TEST( SystemModulesTest, ALostAcknowledgeIsNoMissingModule ) {
   WatchedBoard board;
   unsigned count = 0;
   board.board().missWhere( [&]( const Bus::Transfer &transfer ) {
      return ( transfer.address == 0x50 || transfer.address == 0x51 ) && ++count % 50 == 0;
   } );
   for ( int i = 0; i < 120; ++i )
      board.round();
   EXPECT_GT( count, 1000u );
   for ( const CageModule &module : modulesOf( board.board() ) )
      EXPECT_THAT( module.state, ::testing::AnyOf( State::Ok, State::Absent ) ) << module.cage;
}

TEST( SystemModulesTest, ABusyModuleKeepsItsReadingsAndIsNotTold ) {
   WatchedBoard board;
   for ( int i = 0; i < 5; ++i ) {
      board.sim( { "busy", "qsfp1-eeprom", "200" } );
      for ( int second = 0; second < 10; ++second )
         board.round();
      EXPECT_EQ( moduleIn( board.board(), "qsfp1" ).state, State::Ok );
   }
   EXPECT_THAT( board.told(), IsEmpty() );
}

TEST( SystemModulesTest, AModuleThatShowsAnotherPageIsUnreadableAndHasNoWrongValue ) {
   WatchedBoard board;
   board.sim( { "stuck-page", "qsfp36-eeprom", "1" } );
   for ( int i = 0; i < 30; ++i )
      board.round();
   const CageModule after = moduleIn( board.board(), "qsfp36" );
   EXPECT_EQ( after.state, State::Unreadable );
   EXPECT_EQ( after.fault.words, "page 00h was chosen, and the module shows page 01h" );
   EXPECT_EQ( after.image.regions().count( { 0x50, true, 0, 0x11 } ), 0u );
   EXPECT_THAT( board.told(), ElementsAre( "warning qsfp36-module unreadable" ) );
}

TEST( SystemModulesTest, AModuleThatGivesOnlyOnesIsUnreadable ) {
   OneCage board( "sfp1" );
   board.pull( "sfp1" );
   board.seconds( 2 );
   Simulator::Faults ones;
   ones.allOnes = true;
   board.chip( "sfp1-eeprom" ).faultsAre( ones );
   board.insert( "sfp1" );
   board.seconds( 10 );
   EXPECT_EQ( moduleIn( board, "sfp1" ).state, State::Unreadable );
   EXPECT_EQ( moduleIn( board, "sfp1" ).fault.words,
              "its memory follows none of the known standards" );
}

} // namespace
