// The modules in a board's cages: which devices they are, and what is refused.
#include "boardfiles/Board.h"

#include "support/ChangedBoard.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <set>

namespace BoardFilesTest {

using namespace BoardFiles;
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;

class CageModulesTest : public ::testing::Test {
 protected:
   static Board kelt() {
      Findings findings;
      auto board =
         loadBoard( BOARDS "/kelt", BOARDS "/libOrbisDriversKelt.drivers.json", findings );
      return std::move( board ).value();
   }
   static const ObjectDescription &find( const Board &board, const std::string &name ) {
      return *std::find_if( board.objects.begin(), board.objects.end(),
                            [&]( const auto &one ) { return one.name == name; } );
   }
   static size_t cagesOf( const Board &board ) {
      return static_cast<size_t>(
         std::count_if( board.objects.begin(), board.objects.end(),
                        []( const auto &one ) { return one.kind == Kind::Xcvr; } ) );
   }

   // Kelt, of which a test changes one file.
   const ChangedBoard board_{ BOARDS "/kelt", BOARDS "/libOrbisDriversKelt.drivers.json" };
};

TEST_F( CageModulesTest, EachCageOfTheBoardHasOneWithDevicesOfItsOwn ) {
   const Board board = kelt();
   std::set<ChipPlace> places;
   size_t modules = 0, sfps = 0;
   for ( const ObjectDescription &object : board.objects ) {
      if ( object.kind != Kind::Module )
         continue;
      ++modules;
      EXPECT_EQ( object.name, object.health.in.value() + "-module" );
      EXPECT_THAT( object.chips, SizeIs( object.second.empty() ? 1 : 2 ) ) << object.name;
      EXPECT_EQ( object.chips.front().address, 0x50u );
      if ( !object.second.empty() ) {
         ++sfps;
         EXPECT_EQ( object.chips.back().address, 0x51u ) << object.name;
         EXPECT_EQ( object.chips.back().path, object.chips.front().path ) << object.name;
      }
      for ( const ChipPlace &chip : object.chips )
         EXPECT_TRUE( places.insert( chip ).second ) << object.name;
   }
   EXPECT_EQ( modules, 86u );
   EXPECT_EQ( sfps, 48u );
   EXPECT_EQ( cagesOf( board ), 86u );
}

TEST_F( CageModulesTest, ComeBehindAllOtherObjectsAndCanBeLeftOut ) {
   const Board board = kelt();
   const Board without = withoutModules( board );
   EXPECT_EQ( without.objects.size(), board.objects.size() - 86 );
   for ( size_t i = 0; i < without.objects.size(); ++i )
      EXPECT_EQ( without.objects[i].name, board.objects[i].name );
   const Board one = withoutModules( board, "sfp3-module" );
   EXPECT_EQ( one.objects.size(), without.objects.size() + 1 );
   EXPECT_EQ( one.objects.back().text, "Sfp3" );
   EXPECT_EQ( one.objects.back().second, "Sfp3Diagnostics" );
}

// In objects.json the first cage is the seventh object.
TEST_F( CageModulesTest, TakeTheLimitsOfTheirCagesForEachLane ) {
   board_.change(
      "objects.json", "/6/limits",
      R"({ "rx_power": { "low_critical": 0.25 }, "temperature": { "high_warning": 60 } })" );
   ASSERT_THAT( board_.check(), SizeIs( 0 ) );
   Findings findings;
   const auto board =
      loadBoard( board_.folder().path(), BOARDS "/libOrbisDriversKelt.drivers.json", findings );
   const auto &limits = find( board.value(), "qsfp1-module" ).health.limits;
   EXPECT_EQ( limits.at( "rx_power_4" ).lowCritical, 0.25 );
   EXPECT_EQ( limits.at( "rx_power" ).lowCritical, 0.25 );
   EXPECT_EQ( limits.at( "temperature" ).highWarning, 60 );
}

TEST_F( CageModulesTest, ALabelThatTheTopologyDoesNotHaveIsToldWithItsPlace ) {
   board_.change( "objects.json", "/6/module", R"([ "Qsfp99" ])" );
   EXPECT_THAT( board_.check(),
                ElementsAre( HasSubstr( "qsfp1: the topology has no label \"Qsfp99\"" ) ) );
}

TEST_F( CageModulesTest, OnlyACageHasOne ) {
   board_.change( "objects.json", "/7/type", R"("gpio")" );
   EXPECT_THAT( board_.check(),
                ::testing::Contains(
                   HasSubstr( "\"module\" has a meaning for objects of type \"xcvr\" only" ) ) );
}

TEST_F( CageModulesTest, ItsNameMayNotBeTaken ) {
   board_.change( "objects.json", "/1/name", R"("qsfp1-module")" );
   EXPECT_THAT( board_.check(),
                ElementsAre( HasSubstr( "another object has the name \"qsfp1-module\", which the "
                                        "module gets" ),
                             HasSubstr( "panel.json" ) ) ); // it misses what had another name
}

TEST_F( CageModulesTest, LimitsOfACageWithoutAModuleAreTold ) {
   board_.change( "objects.json", "/6/limits", R"({ "rx_power": { "low_critical": 0.25 } })" );
   board_.change( "objects.json", "/6/module", "" );
   EXPECT_THAT(
      board_.check(),
      ElementsAre( HasSubstr(
         "qsfp1: \"limits\" of a cage are those of its \"module\", which is missing" ) ) );
}

TEST_F( CageModulesTest, HasOneAddressOrTwo ) {
   board_.change( "objects.json", "/6/module", R"([ "Qsfp1", "Qsfp2", "Qsfp3" ])" );
   EXPECT_THAT( board_.check(), SizeIs( 1 ) );
   board_.change( "objects.json", "/6/module", "[]" );
   EXPECT_THAT( board_.check(), SizeIs( 1 ) );
}

} // namespace
} // namespace BoardFilesTest
