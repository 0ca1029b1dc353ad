// registers.json beside a board.
#include "boardfiles/RegistersFile.h"

#include "PrivateFolder.h"
#include "boardfiles/Board.h"

#include <gmock/gmock.h>

namespace BoardFilesTest {

using namespace BoardFiles;
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;

class RegistersFileTest : public ::testing::Test {
 protected:
   ChipRegisters read( const std::string &json ) {
      folder_.write( "registers.json", json );
      Findings findings;
      DriverTable table;
      table.drivers["LM75"];
      ChipRegisters registers = readRegisters( folder_.file( "registers.json" ), table, findings );
      for ( const Finding &finding : findings )
         reasons_.push_back( toText( finding ) );
      return registers;
   }

   const TestSupport::PrivateFolder folder_;
   std::vector<std::string> reasons_;
};

TEST_F( RegistersFileTest, GivesTheRegistersByTheirDriver ) {
   const auto registers = read( R"({ "LM75": [
      { "register": 0, "bytes": 2, "name": "Temperature", "highByteFirst": true, "free": true },
      { "register": 1, "bytes": 1, "name": "Configuration" } ] })" );
   EXPECT_THAT( reasons_, IsEmpty() );
   EXPECT_THAT( registers.at( "LM75" ),
                ElementsAre( ChipRegister{ 0, 2, "Temperature", true, true },
                             ChipRegister{ 1, 1, "Configuration", false, false } ) );
}

TEST_F( RegistersFileTest, RefusesADriverThatThePlugInDoesNotHave ) {
   read( R"({ "LM57": [ { "register": 0, "bytes": 1, "name": "A" } ] })" );
   EXPECT_THAT( reasons_,
                ElementsAre( EndsWith( ":1:3: the plug-in has no driver \"LM57\" (did you "
                                       "mean \"LM75\"?)" ) ) );
}

TEST_F( RegistersFileTest, RefusesARegisterThatIsThereTwice ) {
   read( R"({ "LM75": [ { "register": 16, "bytes": 1, "name": "A" },
                        { "register": 16, "bytes": 2, "name": "B" } ] })" );
   EXPECT_THAT( reasons_,
                ElementsAre( EndsWith( ":2:25: register 0x10 has an entry already, \"A\"" ) ) );
}

TEST_F( RegistersFileTest, RefusesWhatItsSchemaRefuses ) {
   read( R"({ "LM75": [ { "register": 16, "bytes": 3, "name": "A" } ] })" );
   EXPECT_THAT( reasons_, ElementsAre( EndsWith( ":1:40: 3 is none of 1, 2" ) ) );
}

TEST_F( RegistersFileTest, KeltHasThoseOfItsSuppliesAndOnlySuchAsMayBeReadAreFree ) {
   Findings findings;
   const auto board =
      loadBoard( BOARDS "/kelt", BOARDS "/libOrbisDriversKelt.drivers.json", findings );
   ASSERT_TRUE( board );
   const auto isFree = [&]( const char *driver, unsigned number ) {
      for ( const ChipRegister &one : board->registers.at( driver ) )
         if ( one.number == number )
            return one.isFree;
      ADD_FAILURE() << driver << number;
      return false;
   };
   EXPECT_TRUE( isFree( "Pmbus", 0x79 ) );
   EXPECT_TRUE( isFree( "LM75", 0 ) );
   EXPECT_TRUE( isFree( "EMC2305", 0x3F ) );
   EXPECT_FALSE( isFree( "EMC2305", 0x25 ) );     // reading clears it
   EXPECT_FALSE( isFree( "EMC2305", 0x3E ) );     // reading fills the low byte
   EXPECT_FALSE( isFree( "KeltPCA9506", 0x00 ) ); // reading ends the interrupt
}

} // namespace

} // namespace BoardFilesTest
