// Limits, what is on what, and rules: what the host takes from objects.json, and what is refused.
#include "boardfiles/Board.h"

#include "support/ChangedBoard.h"

#include <gmock/gmock.h>

namespace BoardFilesTest {

using namespace BoardFiles;
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

struct WrongKey {
   const char *name, *pointer, *json, *complaint;
};

class WrongKeyTest : public ::testing::TestWithParam<WrongKey> {};

TEST_P( WrongKeyTest, IsToldWithItsPlace ) {
   const ChangedBoard board( SCRIPTED_BOARD, "libScriptedPlugin.drivers.json" );
   board.change( "objects.json", GetParam().pointer, GetParam().json );
   EXPECT_THAT( board.check(), ElementsAre( HasSubstr( GetParam().complaint ) ) );
}

INSTANTIATE_TEST_SUITE_P(
   Each, WrongKeyTest,
   ::testing::Values(
      WrongKey{ "LimitsThatAreCrossed", "/2/limits",
                R"({ "speed": { "low_warning": 3000, "low_critical": 4000 } })",
                "fan: \"low_warning\" (3000) is below \"low_critical\" (4000)" },
      WrongKey{ "LowLimitsAboveHighOnes", "/2/limits",
                R"({ "speed": { "low_critical": 3000, "high_critical": 2000 } })",
                "\"high_critical\" (2000) is below \"low_critical\" (3000)" },
      WrongKey{ "AHysteresisWiderThanTheBand", "/2/limits",
                R"({ "speed": { "low_critical": 1, "high_critical": 9, "hysteresis": 8.5 } })",
                "the hysteresis (8.5) is wider than the band from 1 to 9" },
      WrongKey{ "AValueThatTheObjectDoesNotHave", "/2/limits",
                R"({ "sped": { "low_critical": 1 } })",
                "an object of type \"fan\" has no number \"sped\" (did you mean \"speed\"?)" },
      WrongKey{ "AnotherUnit", "/2/limits", R"({ "speed": { "low_critical": 1, "unit": "V" } })",
                "the unit is \"rpm\", not \"V\"" },
      WrongKey{ "NoLimitAtAll", "/2/limits", R"({ "speed": { "hysteresis": 1 } })",
                "has no limit" },
      WrongKey{ "AKeyThatIsNone", "/2/limits", R"({ "speed": { "low_critical": 1, "low": 1 } })",
                "unknown key \"low\"" },
      WrongKey{ "HighLimitsBesideAlertAndCritical", "/0/limits",
                R"({ "temperature": { "high_warning": 50 } })",
                "the high limits of a temperature are \"alert\" and \"critical\"" },
      WrongKey{ "OnAnObjectThatIsNone", "/2/in", "\"slit\"",
                "no object is named \"slit\" (did you mean \"slot\"?)" },
      WrongKey{ "OnItself", "/2/in", "\"fan\"", "\"fan\" is on \"fan\" itself" },
      WrongKey{ "FollowsSomethingElse", "/2/follows",
                R"({ "fan": "psu", "seconds": 5, "percent": 20 })", "\"psu\" is no fan" },
      WrongKey{ "ARuleOverNobody", "/12",
                R"({ "type": "rule", "name": "both", "members": [ "pso" ], "wanted": 1 })",
                "no object is named \"pso\"" },
      WrongKey{ "ARuleThatWantsMoreThanItHas", "/12",
                R"({ "type": "rule", "name": "both", "members": [ "psu" ], "wanted": 2 })",
                "\"wanted\" is 2, but it has 1 members" },
      WrongKey{
         "ARuleThatNeedsMoreThanItWants", "/12",
         R"({ "type": "rule", "name": "b", "members": [ "psu" ], "wanted": 1, "needed": 2 })",
         "\"needed\" (2) is above \"wanted\" (1)" },
      WrongKey{ "ARuleWithoutARule", "/12",
                R"({ "type": "rule", "name": "both", "members": [ "psu" ] })",
                "has neither \"wanted\" nor \"same\"" },
      WrongKey{
         "TwoRulesInOne", "/12",
         R"({ "type": "rule", "name": "b", "members": [ "psu" ], "wanted": 1, "same": [ "a", "b" ] })",
         "has both \"wanted\" and \"same\": make two rules of it" },
      WrongKey{ "ARuleWithTheNameOfAnObject", "/12",
                R"({ "type": "rule", "name": "psu", "members": [ "psu" ], "wanted": 1 })",
                "another object has this name" } ),
   []( const auto &wrong ) { return std::string( wrong.param.name ); } );

TEST( HealthKeysTest, TheBoardHasWhatItsFileSays ) {
   Findings findings;
   const auto board =
      loadBoard( BOARDS "/kelt", BOARDS "/libOrbisDriversKelt.drivers.json", findings );
   const auto named = [&board]( const std::string &name ) -> const ObjectDescription & {
      for ( const ObjectDescription &object : board->objects )
         if ( object.name == name )
            return object;
      throw std::out_of_range( name );
   };
   EXPECT_EQ( named( "temp-front" ).health.limits.at( "temperature" ),
              ( ValueLimits{ .highWarning = 60, .highCritical = 70, .hysteresis = 2 } ) );
   EXPECT_EQ( named( "psu1-fan1" ).health.in, "psu1" );
   EXPECT_TRUE( named( "psu1-slot" ).health.wanted );
   EXPECT_EQ( named( "fan1-inlet" ).health.follows->fan, "fan1" );
   EXPECT_EQ( board->rules.front().name, "supplies" );
}

TEST( HealthKeysTest, TheBoardKnowsWhereTheChipsOfItsObjectsAre ) {
   Findings findings;
   const auto board =
      loadBoard( BOARDS "/kelt", BOARDS "/libOrbisDriversKelt.drivers.json", findings );
   std::map<std::string, std::vector<ChipPlace>> chips;
   for ( const ObjectDescription &object : board->objects )
      chips[object.name] = object.chips;
   EXPECT_THAT( chips["temp-asic"],
                ElementsAre( ChipPlace{ "scd(4):1:2", "0x70=4 0x71=128", 0x49 } ) );
   EXPECT_THAT( chips["fan1"], ElementsAre( ChipPlace{ "scd(4):1:5", "", 0x2e },
                                            ChipPlace{ "scd(4):1:5", "", 0x2c } ) );
   EXPECT_THAT( chips["qsfp33-eeprom"].front().address, 0x50u );
   EXPECT_THAT( chips["system"], ElementsAre() );
   EXPECT_THAT( muxesBefore( chips["temp-asic"].front() ),
                ElementsAre( ChipPlace{ "scd(4):1:2", "", 0x70 },
                             ChipPlace{ "scd(4):1:2", "0x70=4", 0x71 } ) );
   EXPECT_EQ( toText( chips["temp-asic"].front() ), "0x49 behind 0x70=4 0x71=128 on scd(4):1:2" );
}

} // namespace
} // namespace BoardFilesTest
