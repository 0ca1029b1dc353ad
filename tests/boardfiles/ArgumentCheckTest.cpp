#include "boardfiles/ArgumentCheck.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

namespace BoardFilesTest {

using namespace BoardFiles;
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ArgumentCheckTest : public ::testing::Test {
 protected:
   std::vector<std::string> check( const char *kind, const char *json ) {
      Findings findings;
      const auto document =
         parseJson( fmt::format( R"({{ "driverArgs": {} }})", json ), "f", findings );
      const DriverRule &chip = table_->drivers.at( "Chip" );
      checkArguments( deviceDocument( *document ), chip, chip.makes.at( kind ), findings );
      std::vector<std::string> texts;
      for ( const Finding &finding : findings )
         texts.push_back( finding.place.pointer + ": " + finding.reason );
      return texts;
   }

   Findings none_;
   std::optional<DriverTable> table_ =
      readDriverTable( SCRIPTED_BOARD "/libScriptedPlugin.drivers.json", none_ );
};

TEST_F( ArgumentCheckTest, TakesNumbersAndTheirDecimalText ) {
   for ( const char *id : { "1", "5", "\"3\"" } )
      EXPECT_THAT( check( "fan", fmt::format( R"({{ "fanId": {} }})", id ).c_str() ), IsEmpty() );
}

TEST_F( ArgumentCheckTest, RefusesWhatADriverWouldReadAsAnotherNumber ) {
   for ( const char *id : { "\"0x3\"", "\"3 \"", "\"\"", "3.0", "null", "true", "[]", "5000000000",
                            "\"5000000000\"" } )
      EXPECT_THAT(
         check( "fan", fmt::format( R"({{ "fanId": {} }})", id ).c_str() ),
         ElementsAre( "/driverArgs/fanId: must be a 32-bit integer, or its decimal text" ) )
         << id;
}

TEST_F( ArgumentCheckTest, RefusesIdsOutOfRangeOnEitherSide ) {
   EXPECT_THAT( check( "fan", R"({ "fanId": 0 })" ),
                ElementsAre( "/driverArgs/fanId: 0 is less than 1" ) );
   EXPECT_THAT( check( "fan", R"({ "fanId": "6" })" ),
                ElementsAre( "/driverArgs/fanId: 6 is more than 5" ) );
   EXPECT_THAT( check( "gpio", R"({ "register": 1, "bitpos": 8 })" ),
                ElementsAre( "/driverArgs/bitpos: 8 is more than 7" ) );
}

TEST_F( ArgumentCheckTest, ChecksNumbersAndBooleans ) {
   EXPECT_THAT( check( "fan", R"({ "fanId": 1, "ratio": "0.25", "pec": false })" ), IsEmpty() );
   EXPECT_THAT( check( "fan", R"({ "fanId": 1, "ratio": 1.5, "pec": "True" })" ),
                ElementsAre( "/driverArgs/pec: must be true or false",
                             "/driverArgs/ratio: 1.5 is more than 1" ) );
   EXPECT_THAT( check( "fan", R"({ "fanId": 1, "ratio": "half" })" ),
                ElementsAre( "/driverArgs/ratio: must be a number, or its decimal text" ) );
}

TEST_F( ArgumentCheckTest, TellsWhatIsMissingAndWhatNoDriverReads ) {
   EXPECT_THAT(
      check( "gpio", R"({ "bitPos": 3, "register": 0 })" ),
      ElementsAre( ": driver argument \"bitpos\" is missing",
                   "/driverArgs/bitPos: \"bitPos\" is not an argument of this driver (did you "
                   "mean \"bitpos\"?)" ) );
}

TEST_F( ArgumentCheckTest, TakesAFlagWhateverItsValue ) {
   for ( const char *flag : { "null", "true", "\"\"", "[]" } )
      EXPECT_THAT( check( "psu", fmt::format( R"({{ "poll": {} }})", flag ).c_str() ), IsEmpty() );
}

TEST_F( ArgumentCheckTest, HasRangesOfTheirOwnForTheCasesOfAKind ) {
   EXPECT_THAT( check( "xcvr", R"({ "type": "sfp", "id": 48 })" ), IsEmpty() );
   EXPECT_THAT( check( "xcvr", R"({ "type": "qsfp", "id": 7 })" ),
                ElementsAre( "/driverArgs/id: 7 is more than 6" ) );
   EXPECT_THAT(
      check( "xcvr", R"({ "type": "cfp", "id": 1 })" ),
      ElementsAre( "/driverArgs/type: \"cfp\" is none of qsfp, sfp (did you mean \"sfp\"?)" ) );
   EXPECT_THAT( check( "xcvr", R"({ "id": 1 })" ),
                ElementsAre( ": driver argument \"type\" is missing" ) );
}

TEST_F( ArgumentCheckTest, WantsNumberedArgumentsTogetherAndWithoutAGap ) {
   EXPECT_THAT( check( "slot", R"({ "model_1": "A", "text_1": "{n}" })" ), IsEmpty() );
   EXPECT_THAT( check( "slot", R"({ "model_1": "A", "text_1": "{n}", "model_2": "B" })" ),
                ElementsAre( ": driver argument \"text_2\" is missing" ) );
   EXPECT_THAT( check( "slot", R"({ "model_1": "A", "text_1": "{n}", "model_3": "C" })" ),
                ElementsAre( "/driverArgs/model_3: \"model_3\" is not an argument of this driver "
                             "(did you mean \"model_2\"?)" ) );
   EXPECT_THAT( check( "slot", R"({})" ),
                ElementsAre( ": driver argument \"model_1\" is missing",
                             ": driver argument \"text_1\" is missing" ) );
}

} // namespace
} // namespace BoardFilesTest
