#include "boardfiles/SimulationFile.h"

#include "PrivateFolder.h"
#include "boardfiles/TopologyFile.h"

#include <gmock/gmock.h>

namespace BoardFilesTest {

namespace {

using namespace BoardFiles;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// A bus with places for chips at 72 (two views), 73 and 74, one without an address, and a mux.
class SimulationFileTest : public ::testing::Test {
 protected:
   SimulationFileTest() {
      Findings findings;
      topology = readTopology(
         folder.write( "topology.json", R"([ { "type": "I2C", "ham": "H", "bus": { "id": 0,
            "devices": [ { "did": 10, "address": { "address": 72 } },
                         { "did": 11, "address": { "address": 72 } },
                         { "did": 12, "address": { "address": 73 } },
                         { "did": 14, "address": { "address": 74 } },
                         { "did": 13 } ] } } ])" ),
         findings );
      EXPECT_THAT( findings, IsEmpty() );
   }
   // What is found, without the file's name.
   std::vector<std::string> check( const std::string &text ) {
      Findings findings;
      const auto simulation = readSimulation( folder.write( "simulation.json", text ), findings );
      if ( simulation )
         checkSimulation( *simulation, *topology, findings );
      std::vector<std::string> texts;
      for ( const Finding &finding : findings ) {
         std::string line = toText( finding );
         for ( size_t at; ( at = line.find( folder.file( "" ) ) ) != line.npos; )
            line.erase( at, folder.file( "" ).size() );
         texts.push_back( line.substr( std::string( "simulation.json:" ).size() ) );
      }
      return texts;
   }
   std::vector<std::string> checkChips( const std::string &chips ) {
      return check( "{ \"chips\": [" + chips + "] }" );
   }

   TestSupport::PrivateFolder folder;
   std::unique_ptr<const TopologyFile> topology;
};

constexpr const char *thermometer =
   R"({ "did": 10, "name": "t", "chip": "LM75", "temperature": 1 })";

TEST_F( SimulationFileTest, TakesAGoodOne ) { EXPECT_THAT( checkChips( thermometer ), IsEmpty() ); }

TEST_F( SimulationFileTest, RefusesWhatIsNotAKindOfChip ) {
   EXPECT_EQ( checkChips( R"({ "did": 10, "name": "t", "chip": "LM57" })" ).size(), 1u );
   EXPECT_THAT( checkChips( R"({ "did": 10, "name": "t", "chip": "LM57" })" )[0],
                ::testing::AllOf( ::testing::StartsWith( "1:47: \"LM57\" is none of" ),
                                  ::testing::EndsWith( "(did you mean \"LM75\"?)" ) ) );
   EXPECT_THAT( checkChips( R"({ "did": 10, "name": "t" })" ),
                ElementsAre( "1:13: \"chip\" is missing" ) );
}

TEST_F( SimulationFileTest, ChecksAnEntryByTheRulesOfItsOwnKind ) {
   const auto with = [this]( const std::string &keys ) {
      return checkChips( R"({ "did": 10, "name": "t", "chip": "LM75")" + keys + " }" );
   };
   EXPECT_THAT( with( "" ), ElementsAre( "1:13: \"temperature\" is missing" ) );
   EXPECT_THAT( with( R"(, "temperature": 1, "drfit": 1)" ),
                ElementsAre( "1:73: unknown key \"drfit\" (did you mean \"drift\"?)" ) );
   EXPECT_THAT( with( R"(, "temperature": 125.5)" ), ElementsAre( "1:70: 125.5 is above 125" ) );
   EXPECT_THAT( with( R"(, "temperature": -56)" ), ElementsAre( "1:70: -56 is below -55" ) );
   EXPECT_THAT( with( R"(, "temperature": "warm")" ),
                ElementsAre( "1:70: \"warm\" is not a number" ) );
   EXPECT_THAT( with( R"(, "temperature": 1, "drift": { "amplitude": 1, "period": 0 })" ),
                ElementsAre( "1:110: 0 is below 1" ) );
   EXPECT_THAT( checkChips( R"({ "did": 10, "name": "m", "chip": "PCA9548", "temperature": 1 })" ),
                ElementsAre( "1:58: unknown key \"temperature\"" ) );
}

TEST_F( SimulationFileTest, ReportsAllOfItAtOnce ) {
   EXPECT_THAT(
      check(
         R"({ "speed": 1, "seed": -1, "chips": [ { "did": -1, "name": "", "chip": "PCA9548" } ] })" ),
      ElementsAre( "1:3: unknown key \"speed\" (did you mean \"seed\"?)", "1:23: -1 is below 0",
                   "1:47: -1 is below 0", "1:59: an empty text" ) );
   EXPECT_THAT( check( "{}" ), ElementsAre( "1:1: \"chips\" is missing" ) );
}

TEST_F( SimulationFileTest, RefusesAChipWithoutAPlace ) {
   for ( const char *did : { "99", "13" } )
      EXPECT_THAT(
         checkChips( R"({ "name": "m", "chip": "PCA9548", "did": )" + std::string( did ) + " }" ),
         ElementsAre( std::string( "1:54: no device of topology.json has did " ) + did +
                      " and an address" ) );
}

TEST_F( SimulationFileTest, RefusesTwoChipsAtOnePlaceOrWithOneName ) {
   EXPECT_THAT(
      checkChips( R"({ "did": 10, "name": "t", "chip": "PCA9548" },
                               { "did": 11, "name": "u", "chip": "PCA9548" })" ),
      ElementsAre( "2:32: t is already at this address of this bus (topology.json:3:26)" ) );
   EXPECT_THAT( checkChips( R"({ "did": 10, "name": "t", "chip": "PCA9548" },
                               { "did": 12, "name": "t", "chip": "PCA9548" })" ),
                ElementsAre( "2:53: the name t is there twice, first at simulation.json:1:34" ) );
   EXPECT_THAT( checkChips( R"({ "did": 10, "name": "t", "chip": "PCA9548" },
                               { "did": 10, "name": "u", "chip": "PCA9548", "present": false })" ),
                IsEmpty() );
}

TEST_F( SimulationFileTest, KnowsTheClocksOfTheBusses ) {
   Findings findings;
   const auto simulation = readSimulation(
      folder.write( "simulation.json",
                    R"({ "chips": [], "busses": [ { "bus": "i2c:0", "clock": 400000 } ] })" ),
      findings );
   ASSERT_THAT( findings, IsEmpty() );
   EXPECT_EQ( simulation->wires.at( *Bus::parseRootBusId( "i2c:0" ) ).clock, 400'000u );
}

TEST_F( SimulationFileTest, RefusesWiresOfABusThatIsNotThereOrIsThereTwice ) {
   EXPECT_THAT( check( R"({ "chips": [], "busses": [
      { "bus": "i2c:0", "clock": 400000 }, { "bus": "i2c:0", "clock": 400000 },
      { "bus": "i2c:1", "clock": 400000 }, { "bus": "i2c-1", "clock": 400000 } ] })" ),
                ElementsAre( "2:44: i2c:0 is there twice, first at simulation.json:2:7",
                             "3:53: \"i2c-1\" is not a bus; write i2c:0, scd(4):1:2, celestica:1:1 "
                             "or ioport:0",
                             "3:7: topology.json has no bus i2c:1" ) );
}

TEST_F( SimulationFileTest, HoldsModulesAgainstTheChips ) {
   const auto with = [this]( const std::string &module ) {
      return check( "{ \"chips\": [" + std::string( thermometer ) + "],\n\"modules\": [" + module +
                    "] }" );
   };
   EXPECT_THAT( with( R"({ "name": "m", "chips": [ "t" ] })" ), IsEmpty() );
   EXPECT_THAT( with( R"({ "name": "m", "chips": [ "t1" ] })" ),
                ElementsAre( "2:13: no chip is called t1 (did you mean \"t\"?)" ) );
   EXPECT_THAT( with( R"({ "name": "m", "present": false, "chips": [ "t" ] })" ),
                ElementsAre( "2:13: t is present, but the module is absent" ) );
   const auto set = [&]( const std::string &quantity ) {
      return with( R"({ "name": "m", "sets": [ { "chip": "t", "in": 1, "out": 0, "quantity": ")" +
                   quantity + R"(" } ] })" );
   };
   EXPECT_THAT( set( "temperature" ), IsEmpty() );
   EXPECT_THAT( set( "tOs" ), ElementsAre( "2:38: t has no quantity \"tOs\" that can be set" ) );
   EXPECT_THAT( with( R"({ "name": "m" }, { "name": "m" })" ),
                ElementsAre( "2:40: the name m is there twice, first at simulation.json:2:23" ) );
}

TEST_F( SimulationFileTest, HoldsASecondAddressAgainstTheWiring ) {
   const auto with = [this]( const std::string &diagnostics ) {
      return checkChips( R"({ "did": 10, "name": "s", "chip": "SfpModule", "media": "10GBASE-SR",
         "vendor": "v", "partNumber": "p", "revision": "r", "serial": "s", "date": "d",
         "ambient": 30, "diagnostics": )" +
                         diagnostics + " }" );
   };
   EXPECT_THAT( with( "12" ), IsEmpty() );
   EXPECT_THAT( with( "99" ),
                ElementsAre( "3:40: no device of topology.json has did 99 and an address" ) );
}

TEST_F( SimulationFileTest, HoldsCagesAgainstTheChips ) {
   const auto with = [this]( const std::string &cage ) {
      return check( R"({ "chips": [ { "did": 10, "name": "c", "chip": "QsfpCpld" } ],
"modules": [ { "name": "m", "cage": )" +
                    cage + " } ] }" );
   };
   EXPECT_THAT( with( R"({ "chip": "c", "name": "qsfp1" })" ), IsEmpty() );
   EXPECT_THAT( with( R"({ "chip": "d", "name": "qsfp1" })" ),
                ElementsAre( "2:37: no chip is called d (did you mean \"c\"?)" ) );
   EXPECT_THAT( with( R"({ "chip": "c", "name": "cage1" })" ),
                ElementsAre( "2:37: c has no quantity \"cage1 presence\" that can be set" ) );
}

TEST_F( SimulationFileTest, HoldsFibresAgainstTheModules ) {
   const auto with = [this]( const std::string &fibres ) {
      return check( "{ \"chips\": [], \"modules\": [ { \"name\": \"m1\" }, { \"name\": \"m2\" }, "
                    "{ \"name\": \"m3\" } ],\n\"fibres\": [ " +
                    fibres + " ] }" );
   };
   EXPECT_THAT( with( R"({ "ends": [ "m1", "m2" ], "loss": 2.5 })" ), IsEmpty() );
   EXPECT_THAT( with( R"({ "ends": [ "m1", "mx" ] })" ),
                ElementsAre( "2:13: no module is called mx (did you mean \"m1\"?)" ) );
   EXPECT_THAT( with( R"({ "ends": [ "m1", "m2" ] }, { "ends": [ "m3", "m1" ] })" ),
                ElementsAre( "2:41: m1 has a fibre already, at simulation.json:2:13" ) );
   EXPECT_THAT( with( R"({ "ends": [ "m1" ] })" ), ElementsAre( ::testing::HasSubstr( "2:" ) ) );
}

} // namespace

} // namespace BoardFilesTest
