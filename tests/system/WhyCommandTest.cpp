// What orbis-host why tells of a board with a fault.
#include "RunningBoard.h"

#include <gmock/gmock.h>

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

class WhyCommandTest : public ::testing::Test {
 protected:
   Ran why( const std::string &object ) { return board_.host( { "why", object } ); }
   RunningBoard board_{ "kelt" };
};

TEST_F( WhyCommandTest, LeadsFromAFanToTheSlotOfThePulledSupply ) {
   board_.smbus( { "sim", "pull", "psu2" } );
   const Ran ran = why( "psu2-fan1" );
   EXPECT_EQ( ran.exitCode, 1 );
   EXPECT_THAT( ran.output,
                AllOf( HasSubstr( "where       bus scd(4):1:4, chip 0x59\n" ),
                       HasSubstr( "driver Pmbus, did 31\n            on psu2, on psu2-slot\n" ),
                       HasSubstr( "because of \"psu2-slot absent\": there is no module" ),
                       HasSubstr( "0x58 answers: psu1-slot, psu1" ),
                       HasSubstr( "0x59 doesn't answer: psu2" ),
                       HasSubstr( " ago: read of 2 bytes from 0x59 register 0x79: no acknowledge" ),
                       HasSubstr( "registers   of 0x59: the chip doesn't answer\n" ) ) );
}

TEST_F( WhyCommandTest, ReadsTheRegistersOfASupplyWithoutMainsFromServe ) {
   board_.smbus( { "sim", "set", "psu1", "line", "0" } );
   const auto serve = board_.serve( { "--period", "0.2" } );
   Ran ran = why( "psu1" );
   while ( ran.output.find( "because of" ) == std::string::npos )
      ran = why( "psu1" ); // it is told once it has lasted
   EXPECT_EQ( ran.exitCode, 1 );
   EXPECT_THAT( ran.output,
                AllOf( HasSubstr( "because of \"psu1 input lost\"" ), HasSubstr( "  last, " ),
                       HasSubstr( "of 0x58, through psu1-status:\n" ),
                       HasSubstr( "0x79 STATUS_WORD              0x2848\n" ),
                       HasSubstr( "0x7c STATUS_INPUT             0x18\n" ),
                       HasSubstr( "  critical  psu1 input lost: " ) ) );
   EXPECT_THAT( why( "psu2" ).output, HasSubstr( "nothing is wrong\n" ) );
}

TEST_F( WhyCommandTest, ReadsTheRegistersWithoutServeToo ) {
   const Ran ran = why( "psu1" );
   EXPECT_EQ( ran.exitCode, 0 ) << ran.errors;
   EXPECT_THAT( ran.output, HasSubstr( "0x79 STATUS_WORD              0x0000\n" ) );
   EXPECT_THAT( why( "temp-front" ).output,
                HasSubstr( "of 0x48: no SMBus object of the board reaches this chip\n" ) );
}

TEST_F( WhyCommandTest, AWrongNameIsAnErrorThatNamesTheNearest ) {
   const Ran ran = why( "psu1-fan3" );
   EXPECT_EQ( ran.exitCode, 2 );
   EXPECT_THAT( ran.errors,
                HasSubstr( "has no object \"psu1-fan3\" (did you mean \"psu1-fan1\"?)" ) );
   EXPECT_THAT( ran.output, Not( HasSubstr( "where" ) ) );
}

} // namespace
