#include "ManualClock.h"
#include "PrivateFolder.h"
#include "boardfiles/JsonFile.h"
#include "simulator/board/SimulatedBoard.h"

#include <gtest/gtest.h>

namespace SimulatorTest {

namespace {

using namespace TestSupport;
using namespace BoardFiles;
using namespace Bus;
using namespace Simulator;
using namespace std::chrono_literals;
using Kind = Transfer::Kind;

class BoardTest : public ::testing::Test {
 protected:
   // The error in the board, without the name of the folder.
   std::string complaint() {
      folder.write( "topology.json", topology );
      folder.write( "simulation.json", simulation );
      try {
         SimulatedBoard( folder.file( "topology.json" ), folder.file( "simulation.json" ), clock );
         return "none";
      } catch ( const BoardError &error ) {
         std::string text = error.what();
         for ( size_t at; ( at = text.find( folder.file( "" ) ) ) != text.npos; )
            text.erase( at, folder.file( "" ).size() );
         return text;
      }
   }
   std::string complaintOnChips( const std::string &chips ) {
      simulation = R"({ "chips": [ )" + chips + " ] }";
      return complaint();
   }
   std::string complaintOnBus( const std::string &keys ) {
      topology = R"([ { "type": "I2C", "ham": "H", "bus": { "id": 0, )" + keys + " } } ]";
      simulation = R"({ "chips": [] })";
      return complaint();
   }

   ManualClock clock;
   TestSupport::PrivateFolder folder;
   std::string topology = R"([ { "type": "I2C", "ham": "H", "bus": { "id": 0, "devices": [
      { "did": 10, "address": { "address": 72 } },
      { "did": 11, "address": { "address": 72 } },
      { "did": 12, "address": { "address": 73 } },
      { "did": 13 } ] } } ])";
   std::string simulation = R"({ "chips": [] })";
};

TEST_F( BoardTest, ServesTheKeltBoardWithItsOwnValues ) {
   SimulatedBoard board( KELT_BOARD "/topology.json", KELT_BOARD "/simulation.json", clock );
   const Busses busses = board.busses();
   const auto reading = [&]( const char *bus, uint8_t address ) {
      return busses.at( *parseRootBusId( bus ) )
         ->transfer( { .kind = Kind::Read, .address = address, .length = 2 } )
         .data;
   };
   const auto select = [&]( uint8_t mux, uint32_t byte ) {
      busses.at( *parseRootBusId( "scd(4):1:2" ) )
         ->transfer( { .kind = Kind::Write, .address = mux, .offset = byte } );
   };
   ASSERT_EQ( busses.size(), 8u );
   EXPECT_EQ( reading( "scd(4):1:3", 0x4A ), std::string( "\xFD\x00", 2 ) ); // -3.0
   EXPECT_EQ( reading( "i2c:0", 0x48 ), std::string( "\x2F\x00", 2 ) );      // 47.0
   select( 0x70, 1 );
   EXPECT_EQ( reading( "scd(4):1:2", 0x48 ), "\x18\x80" ); // 24.5
   select( 0x70, 2 );
   EXPECT_EQ( reading( "scd(4):1:2", 0x48 ), std::string( "\x1F\x00", 2 ) ); // 31.0
   select( 0x70, 4 );
   select( 0x71, 128 );
   EXPECT_EQ( reading( "scd(4):1:2", 0x49 ), "\x3A\x80" ); // 58.5
   clock.advance( 1h );
   EXPECT_EQ( reading( "scd(4):1:2", 0x49 ), "\x3A\x80" );
}

TEST_F( BoardTest, ServesEveryMasterType ) {
   topology = R"([
      { "type": "I2C", "ham": "H", "simulated": true, "bus": { "id": 1 } },
      { "type": "I2C", "ham": "H", "bus": { "id": 1 } },
      { "type": "IOPort", "ham": "H", "bus": { "id": 1 } },
      { "type": "Celestica", "ham": "H", "accelerators": [ { "id": 2, "busses": [ { "id": 3 } ] } ] },
      { "type": "SCD", "ham": "H", "pci": 4, "accelerators": [ { "id": 2, "busses": [ { "id": 3 } ] } ] } ])";
   ASSERT_EQ( complaint(), "none" );
   SimulatedBoard board( folder.file( "topology.json" ), folder.file( "simulation.json" ), clock );
   std::string names;
   for ( const auto &[id, bus] : board.busses() )
      names += toString( id ) + " ";
   EXPECT_EQ( names, "sim:1 i2c:1 scd(4):2:3 ioport:1 celestica:2:3 " );
}

TEST_F( BoardTest, DriftsFromItsSeedWithTheClock ) {
   const auto readingAfter = [&]( Clock::Time time, const char *seed ) {
      ManualClock turned;
      turned.advance( time );
      folder.write( "topology.json", topology );
      folder.write( "simulation.json",
                    std::string( R"({ "seed": )" ) + seed + R"(, "chips": [ { "did": 10,
         "name": "t", "chip": "LM75", "temperature": 0, "drift": { "amplitude": 50, "period": 10 } } ] })" );
      SimulatedBoard board( folder.file( "topology.json" ), folder.file( "simulation.json" ),
                            turned );
      return board.busses()[*parseRootBusId( "i2c:0" )]
         ->transfer( { .kind = Kind::Read, .address = 0x48, .length = 2 } )
         .data;
   };
   EXPECT_EQ( readingAfter( 0s, "1" ), std::string( 2, '\0' ) );
   EXPECT_EQ( readingAfter( 10s, "1" ), readingAfter( 10s, "1" ) );
   EXPECT_NE( readingAfter( 10s, "1" ), readingAfter( 20s, "1" ) );
   EXPECT_NE( readingAfter( 10s, "1" ), readingAfter( 10s, "2" ) );
}

TEST_F( BoardTest, HasNoChipWhereItIsAbsent ) {
   ASSERT_EQ(
      complaintOnChips(
         R"({ "did": 10, "name": "t", "chip": "LM75", "temperature": 1, "present": false })" ),
      "none" );
   SimulatedBoard board( folder.file( "topology.json" ), folder.file( "simulation.json" ), clock );
   EXPECT_EQ( board.busses()[*parseRootBusId( "i2c:0" )]->transfer( { .address = 0x48 } ).error,
              noAddressAcknowledge );
}

TEST_F( BoardTest, NamesFileAndReasonWhenReadingFails ) {
   try {
      SimulatedBoard( folder.file( "nowhere.json" ), folder.file( "" ), clock );
      FAIL();
   } catch ( const BoardError &error ) {
      EXPECT_EQ( error.what(),
                 folder.file( "nowhere.json: can't be read: No such file or directory" ) );
   }
}

TEST_F( BoardTest, NamesLineAndColumnOfASyntaxError ) {
   topology = "[\n   { \"type\" \"SCD\" }\n]";
   EXPECT_EQ( complaint(), "topology.json:2:13: Missing a colon after a name of object member." );
   topology = "[]";
   simulation = "{";
   EXPECT_EQ( complaint(), "simulation.json:1:2: Missing a name for object member." );
}

TEST_F( BoardTest, NamesWhatIsWrongInTheTopology ) {
   const std::pair<const char *, const char *> rows[] = {
      { R"({})", "topology.json: /: is no array" },
      { R"([ 5 ])", "topology.json: /0: is no object" },
      { R"([ { "ham": "H" } ])", "topology.json: /0: has no \"type\"" },
      { R"([ { "type": "CAN" } ])", "topology.json: /0/type: unknown type \"CAN\", where SCD, I2C, "
                                    "IOPort or Celestica is due" },
      { R"([ { "type": "SCD" } ])", "topology.json: /0: has no \"pci\"" },
      { R"([ { "type": "I2C" } ])", "topology.json: /0: has no \"bus\"" },
      { R"([ { "type": "I2C", "bus": { "id": 128 } } ])",
        "topology.json: /0/bus/id: is no whole number from 0 to 127" },
      { R"([ { "type": "I2C", "bus": { "id": -1 } } ])",
        "topology.json: /0/bus/id: is no whole number from 0 to 127" },
      { R"([ { "type": "I2C", "simulated": 1, "bus": { "id": 0 } } ])",
        "topology.json: /0/simulated: is neither true nor false" },
      { R"([ { "type": "IOPort", "bus": { "id": 0, "devices": {} } } ])",
        "topology.json: /0/bus/devices: is no array" },
      { R"([ { "type": "SCD", "pci": 4, "accelerators": [ { "id": 1, "busses": [ { "id": 2,
           "devices": [ { "did": 1, "address": { "address": 128 } } ] } ] } ] } ])",
        "topology.json: /0/accelerators/0/busses/0/devices/0/address/address: "
        "is no whole number from 0 to 127" },
   };
   for ( const auto &[text, due] : rows ) {
      topology = text;
      EXPECT_EQ( complaint(), due ) << text;
   }
}

TEST_F( BoardTest, NamesADidThatIsUsedTwice ) {
   EXPECT_EQ( complaintOnBus( R"("devices": [ { "did": 10, "address": { "address": 72 } },
                                              { "did": 10, "address": { "address": 73 } } ])" ),
              "topology.json: /0/bus/devices/1: did 10 is elsewhere already, at /0/bus/devices/0" );
}

TEST_F( BoardTest, NamesAMuxThatIsNotADeviceOfItsBus ) {
   EXPECT_EQ(
      complaintOnBus( R"("muxes": [ { "did": 100, "busses": [] } ])" ),
      "topology.json: /0/bus/muxes/0/did: no device of this bus has did 100 and an address" );
}

TEST_F( BoardTest, NamesAMuxBusThatDoesNotSelectOneChannel ) {
   for ( const char *id : { "0", "3", "256", "129" } )
      EXPECT_EQ(
         complaintOnBus( R"("devices": [ { "did": 100, "address": { "address": 112 } } ],
                    "muxes": [ { "did": 100, "busses": [ { "id": 4 }, { "id": )" +
                         std::string( id ) + " } ] } ]" ),
         std::string( "topology.json: /0/bus/muxes/0/busses/1/id: " ) + id +
            " selects no single channel: its low byte must have one bit (1, 2, 4, ... 128)" );
}

TEST_F( BoardTest, NamesAMuxWithoutAChip ) {
   const std::string mux = R"("devices": [ { "did": 100, "address": { "address": 112 } } ],
                              "muxes": [ { "did": 100, "busses": [ { "id": 260 } ] } ])";
   const char *due =
      "simulation.json: /chips: no PCA9548 for did 100, the multiplexer at /0/bus/muxes/0 "
      "in topology.json";
   EXPECT_EQ( complaintOnBus( mux ), due );
   EXPECT_EQ(
      complaintOnChips( R"({ "did": 100, "name": "m", "chip": "LM75", "temperature": 1 })" ), due );
   EXPECT_EQ( complaintOnChips( R"({ "did": 100, "name": "m", "chip": "PCA9548" })" ), "none" );
}

TEST_F( BoardTest, NamesWhatIsWrongInTheSimulation ) {
   const std::pair<const char *, const char *> rows[] = {
      { R"({ "did": 10, "name": "t", "chip": "LM76" })",
        "/chips/0/chip: \"LM76\" is none of [\"LM75\",\"PCA9548\",\"EMC2305\",\"PCA9506\","
        "\"PmbusSupply\",\"Fru24C02\",\"SfpModule\",\"QsfpModule\",\"QsfpCpld\",\"SfpCpld\","
        "\"SystemCpld\"]" },
      { R"({ "did": 10, "name": "t" })", "/chips/0: has no \"chip\"" },
      { R"({ "did": 10, "name": "t", "chip": "LM75" })", "/chips/0: has no \"temperature\"" },
      { R"({ "did": 10, "name": "t", "chip": "LM75", "temperature": 1, "colour": 1 })",
        "/chips/0/colour: unknown key" },
      { R"({ "did": 10, "name": "t", "chip": "PCA9548", "temperature": 1 })",
        "/chips/0/temperature: unknown key" },
      { R"({ "did": 10, "name": "t", "chip": "LM75", "temperature": 125.5 })",
        "/chips/0/temperature: 125.5 is above 125" },
      { R"({ "did": 10, "name": "t", "chip": "LM75", "temperature": -56 })",
        "/chips/0/temperature: -56 is below -55" },
      { R"({ "did": 10, "name": "t", "chip": "LM75", "temperature": "warm" })",
        "/chips/0/temperature: \"warm\" is no number" },
      { R"({ "did": 10, "name": "t", "chip": "LM75", "temperature": 1, "drift": { "amplitude": 1, "period": 0 } })",
        "/chips/0/drift/period: 0 is below 1" },
      { R"({ "did": -1, "name": "t", "chip": "PCA9548" })", "/chips/0/did: -1 is below 0" },
      { R"({ "did": 10, "name": "", "chip": "PCA9548" })",
        "/chips/0/name: \"\" is against \"minLength\"" },
      { R"({ "did": 99, "name": "t", "chip": "PCA9548" })",
        "/chips/0/did: no device of topology.json has did 99 and an address" },
      { R"({ "did": 13, "name": "t", "chip": "PCA9548" })",
        "/chips/0/did: no device of topology.json has did 13 and an address" },
      { R"({ "did": 10, "name": "t", "chip": "PCA9548" }, { "did": 10, "name": "u", "chip": "PCA9548" })",
        "/chips/1: t sits at this place already (/0/bus/devices/0 in topology.json)" },
      { R"({ "did": 10, "name": "t", "chip": "PCA9548" }, { "did": 12, "name": "t", "chip": "PCA9548" })",
        "/chips/1/name: t is at /chips/0/name already" },
      { R"({ "did": 10, "name": "t", "chip": "PCA9548" }, { "did": 11, "name": "u", "chip": "PCA9548" })",
        "/chips/1: t sits at this place already (/0/bus/devices/1 in topology.json)" },
   };
   for ( const auto &[chips, due] : rows )
      EXPECT_EQ( complaintOnChips( chips ), std::string( "simulation.json: " ) + due ) << chips;
   simulation = R"({ "chips": [], "speed": 1 })";
   EXPECT_EQ( complaint(), "simulation.json: /speed: unknown key" );
   simulation = "{}";
   EXPECT_EQ( complaint(), "simulation.json: /: has no \"chips\"" );
   simulation = R"({ "seed": -1, "chips": [] })";
   EXPECT_EQ( complaint(), "simulation.json: /seed: -1 is below 0" );
}

} // namespace

} // namespace SimulatorTest
