#include "ManualClock.h"
#include "PrivateFolder.h"
#include "boardfiles/Finding.h"
#include "boardfiles/Pattern.h"
#include "simulator/board/ChipKinds.h"
#include "simulator/board/SimulatedBoard.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>

namespace SimulatorTest {

namespace {

using namespace TestSupport;
using namespace BoardFiles;
using namespace Bus;
using namespace Simulator;
using namespace std::chrono_literals;
using ::testing::HasSubstr;
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

TEST_F( BoardTest, NamesAllThatIsWrongInBothFiles ) {
   topology = R"([ { "type": "I2C", "ham": "H", "bus": { "id": 128 } } ])";
   simulation = R"({ "chips": [ { "did": 10, "name": "t", "chip": "LM75" } ] })";
   EXPECT_EQ( complaint(), "topology.json:1:47: 128 is above 127, the highest that a request can "
                           "carry\nsimulation.json:1:14: \"temperature\" is missing" );
}

TEST_F( BoardTest, NamesFilesThatCannotBeRead ) {
   try {
      SimulatedBoard( folder.file( "nowhere.json" ), folder.file( "" ), clock );
      FAIL();
   } catch ( const BoardError &error ) {
      EXPECT_EQ( error.what(),
                 folder.file( "nowhere.json: no such file\n" ) + folder.file( ": not a file" ) );
   }
}

TEST_F( BoardTest, NamesAMuxWithoutAChipOnTheBus ) {
   const std::string mux = R"("devices": [ { "did": 100, "address": { "address": 112 } } ],
                              "muxes": [ { "did": 100, "busses": [ { "id": 260 } ] } ])";
   const char *expected =
      "simulation.json:1:12: device 100 has no multiplexer chip, which the mux at "
      "topology.json:2:42 needs";
   EXPECT_EQ( complaintOnBus( mux ), expected );
   EXPECT_EQ(
      complaintOnChips( R"({ "did": 100, "name": "m", "chip": "LM75", "temperature": 1 })" ),
      expected );
   EXPECT_EQ( complaintOnChips( R"({ "did": 100, "name": "m", "chip": "PCA9548" })" ), "none" );
   EXPECT_THAT( complaintOnBus( R"("devices": [ { "did": 100 } ],
                                   "muxes": [ { "did": 100, "busses": [] } ])" ),
                HasSubstr( "the mux's chip, device 100, has no address" ) );
}

TEST_F( BoardTest, NamesTextsThatAChipHasNoRoomFor ) {
   std::string chip = R"({ "did": 10, "name": "f", "chip": "Fru24C02")";
   for ( const char *key :
         { "manufacturer", "product", "partNumber", "version", "serial", "assetTag" } )
      chip += std::string( ", \"" ) + key + "\": \"" + std::string( 60, 'x' ) + "\"";
   EXPECT_THAT( complaintOnChips( chip + " }" ), HasSubstr( "simulation.json:1:14: " ) );
}

TEST_F( BoardTest, NamesAFibreToAModuleWithoutTransceiver ) {
   simulation = R"({ "chips": [ { "did": 10, "name": "t", "chip": "LM75", "temperature": 1 } ],
"modules": [ { "name": "m1", "chips": [ "t" ] }, { "name": "m2" } ],
"fibres": [ { "ends": [ "m1", "m2" ] } ] })";
   EXPECT_EQ( complaint(), "simulation.json:3:13: module m1 has no transceiver that a fibre could "
                           "be put into; name another module, or add the chip to its \"chips\"" );
}

TEST_F( BoardTest, HasTheSchemaThatTheChipsDescribe ) {
   std::ifstream stream( BOARDS "/simulation.schema.json" );
   const std::string text{ std::istreambuf_iterator<char>( stream ), {} };
   EXPECT_TRUE( text == simulationSchemaText() )
      << "boards/simulation.schema.json is not what the simulated chips describe; "
         "packaging/renew-schema writes it anew";
}

} // namespace

} // namespace SimulatorTest
