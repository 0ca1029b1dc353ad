// safe-state.json beside a board.
#include "boardfiles/SafeStateFile.h"

#include "PrivateFolder.h"
#include "boardfiles/Board.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

namespace BoardFilesTest {

using namespace BoardFiles;
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// A fan controller behind a multiplexer, and an expander with LED and power pins.
class SafeStateFileTest : public ::testing::Test {
 protected:
   SafeStateFileTest() {
      folder_.write( "topology.json",
                     R"([ { "type": "I2C", "ham": "OrbisSmbus", "bus": { "id": 1,
         "devices": [ { "did": 1, "driver": "PCA9548", "address": { "address": 112 } },
                      { "did": 42, "driver": "KeltPCA9506", "address": { "address": 32 } } ],
         "muxes": [ { "did": 1, "busses": [ { "id": 4,
            "devices": [ { "did": 40, "address": { "address": 46 } } ] } ] } ] } } ])" );
      Findings findings;
      topology_ = readTopology( folder_.file( "topology.json" ), findings );
      EXPECT_THAT( findings, IsEmpty() );
   }
   SafeState read( const std::string &json ) {
      folder_.write( "safe-state.json", json );
      const ChipPlaces places( *topology_ );
      Findings findings;
      SafeState state = readSafeState( folder_.file( "safe-state.json" ),
                                       { places, registers_, drivers_ }, findings );
      for ( const Finding &finding : findings )
         reasons_.push_back( toText( finding ) );
      return state;
   }
   std::vector<std::string> refused( const std::string &write ) {
      reasons_.clear();
      read( fmt::format( R"({{ "writes": [ {} ] }})", write ) );
      return reasons_;
   }

   const TestSupport::PrivateFolder folder_;
   std::unique_ptr<const TopologyFile> topology_;
   std::map<uint32_t, std::string> drivers_{ { 40, "EMC2305" }, { 42, "KeltPCA9506" } };
   ChipRegisters registers_{ { "EMC2305",
                               { { .number = 0x30, .name = "Fan 1 Setting", .isWhole = true },
                                 { .number = 0x32, .name = "Fan 1 Configuration 1" },
                                 { .number = 0x3E, .bytes = 2, .name = "Fan 1 TACH Reading" } } },
                             { "KeltPCA9506", { { .number = 8, .name = "OP0" } } } };
   std::vector<std::string> reasons_;
};

TEST_F( SafeStateFileTest, GivesTheWritesWithTheWayToTheirChips ) {
   const SafeState state = read( R"({ "lease": 20, "writes": [
      { "did": 40, "register": 48, "value": 255 },
      { "did": 42, "register": 8, "mask": 3, "value": 1 } ] })" );
   EXPECT_THAT( reasons_, IsEmpty() );
   EXPECT_EQ( state.lease, 20u );
   EXPECT_THAT( state.writes,
                ElementsAre( SafeRegister{ { "i2c:1", "0x70=4", 0x2E }, 0x30, 0xFF, {} },
                             SafeRegister{ { "i2c:1", "", 0x20 }, 8, 1, 3 } ) );
}

TEST_F( SafeStateFileTest, TheLeaseIs15SecondsAndNotShorter ) {
   EXPECT_EQ( read( R"({ "writes": [ { "did": 40, "register": 48, "value": 255 } ] })" ).lease,
              15u );
   read( R"({ "lease": 14, "writes": [ { "did": 40, "register": 48, "value": 255 } ] })" );
   EXPECT_THAT( reasons_, ElementsAre( HasSubstr( "14" ) ) );
}

// An LED's bank has the pin of a supply, too.
TEST_F( SafeStateFileTest, RefusesAPlainWriteToARegisterWithBitsOfSeveralThings ) {
   const auto why = ElementsAre( EndsWith( "\"OP0\" of KeltPCA9506 has bits of several things: a "
                                           "\"mask\" has to say which of them are meant" ) );
   EXPECT_THAT( refused( R"({ "did": 42, "register": 8, "value": 1 })" ), why );
   EXPECT_THAT( refused( R"({ "did": 42, "register": 8, "mask": 255, "value": 1 })" ), why );
   EXPECT_THAT( refused( R"({ "did": 42, "register": 8, "mask": 254, "value": 2 })" ), IsEmpty() );
}

TEST_F( SafeStateFileTest, RefusesWhatIsNotKnown ) {
   EXPECT_THAT( refused( R"({ "did": 7, "register": 8, "value": 1 })" ),
                ElementsAre( EndsWith( "the topology has no chip for device 7" ) ) );
   EXPECT_THAT( refused( R"({ "did": 1, "register": 8, "value": 1 })" ),
                ElementsAre( EndsWith( "no object says which driver device 1 has, so that its "
                                       "registers are not known" ) ) );
   EXPECT_THAT( refused( R"({ "did": 40, "register": 9, "value": 1 })" ),
                ElementsAre( EndsWith( "registers.json has no register 0x09 of EMC2305" ) ) );
   EXPECT_THAT(
      refused( R"({ "did": 40, "register": 62, "value": 1 })" ),
      ElementsAre( EndsWith( "\"Fan 1 TACH Reading\" of EMC2305 has 2 bytes; only one can "
                             "be written" ) ) );
   EXPECT_THAT( refused( R"({ "did": 40, "register": 48, "value": 256 })" ),
                ElementsAre( HasSubstr( "256" ) ) );
}

TEST_F( SafeStateFileTest, RefusesBitsOutsideOfTheMask ) {
   EXPECT_THAT( refused( R"({ "did": 42, "register": 8, "mask": 3, "value": 4 })" ),
                ElementsAre( EndsWith( "0x04 has bits outside of its mask 0x03" ) ) );
}

TEST_F( SafeStateFileTest, RefusesTheSameBitsTwice ) {
   EXPECT_THAT(
      refused( R"({ "did": 42, "register": 8, "mask": 3, "value": 1 },
                            { "did": 42, "register": 8, "mask": 4, "value": 4 },
                            { "did": 42, "register": 8, "mask": 6, "value": 2 })" ),
      ElementsAre( HasSubstr( "writes the same bits" ), HasSubstr( "writes the same bits" ) ) );
   EXPECT_THAT( refused( R"({ "did": 40, "register": 48, "value": 1 },
                            { "did": 40, "register": 48, "value": 1 })" ),
                ElementsAre( EndsWith( "an earlier entry writes the same bits of register 0x30 of "
                                       "0x2e behind 0x70=4 on i2c:1" ) ) );
}

TEST_F( SafeStateFileTest, TheKeltBoardDrivesAllFansAtFullSpeed ) {
   Findings findings;
   const auto board =
      loadBoard( BOARDS "/kelt", BOARDS "/libOrbisDriversKelt.drivers.json", findings );
   ASSERT_TRUE( board && board->safeState );
   std::map<std::string, unsigned> registers;
   for ( const SafeRegister &write : board->safeState->writes ) {
      EXPECT_EQ( write.value, 255 );
      ++registers[toText( write.chip )];
   }
   EXPECT_EQ( registers, ( std::map<std::string, unsigned>{ { "0x2c on scd(4):1:5", 5 },
                                                            { "0x2e on scd(4):1:5", 5 } } ) );
}

} // namespace

} // namespace BoardFilesTest
