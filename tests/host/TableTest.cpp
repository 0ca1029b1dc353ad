#include "host/terminal/Table.h"
#include "screen/Width.h"

#include <gmock/gmock.h>

namespace HostTest {

namespace {

using Host::Scalar;
using Host::tableOf;
using Host::toText;

TEST( TableTest, ANumberHasTheDigitsThatAChipMeasures ) {
   EXPECT_EQ( toText( Scalar( 11.957031 ) ), "11.96" );
   EXPECT_EQ( toText( Scalar( 1.0195312 ) ), "1.02" );
   EXPECT_EQ( toText( Scalar( 38.3125 ) ), "38.31" );
   EXPECT_EQ( toText( Scalar( 232.25 ) ), "232.2" );
   EXPECT_EQ( toText( Scalar( 0.0625 ) ), "0.062" );
   EXPECT_EQ( toText( Scalar( -25.5 ) ), "-25.5" );
   EXPECT_EQ( toText( Scalar( 230.0 ) ), "230.0" );
   EXPECT_EQ( toText( Scalar( 0.0 ) ), "0.0" );
   EXPECT_EQ( toText( Scalar( 12345.5 ) ), "12345.5" );
}

TEST( TableTest, OtherValuesAreWords ) {
   EXPECT_EQ( toText( Scalar( int64_t( 8688 ) ) ), "8688" );
   EXPECT_EQ( toText( Scalar( true ) ), "yes" );
   EXPECT_EQ( toText( Scalar( std::string() ) ), "-" );
   EXPECT_EQ( toText( Scalar() ), "-" );
}

// What says what is wrong is longer than the terminal is wide.
const Host::BoardReport wide{
   { .name = "temp-front",
     .type = "temp_sensor",
     .values = { { { "temperature",
                     "°C",
                     Host::State::Unreadable,
                     {},
                     { 6, "request 1 of 3: send byte 0x02 to 0x70 on scd(4):1:2: no acknowledge; "
                          "request 3 of 3: no acknowledge" } },
                   3 } } },
   { .name = "psu1-slot",
     .type = "slot",
     .values = { { { "presence",
                     "",
                     Host::State::Ok,
                     std::string( "KP-850AC-F 850 W frontToBackAirflow P2306A0017" ),
                     {} },
                   0.3 } } }
};

TEST( TableTest, AtATerminalOf80LongCellsWrapAndAFaultIsWholeBelowItsRow ) {
   EXPECT_THAT(
      tableOf( wide, 80 ),
      ::testing::ElementsAre(
         "NAME        READING      VALUE                                 STATE       AGE",
         "temp-front  temperature  -                                     unreadable  3.0 s",
         "  status 6 (transaction): request 1 of 3: send byte 0x02 to 0x70 on scd(4):1:2:",
         "  no acknowledge; request 3 of 3: no acknowledge",
         "psu1-slot   presence     KP-850AC-F 850 W frontToBackAirflow   ok          0.3 s",
         "                         P2306A0017", "(TYPE: no room in 80 columns)" ) );
}

TEST( TableTest, NoLineIsWiderThanTheTerminalAndNoWordOfAFaultIsLost ) {
   for ( size_t columns : { 60u, 80u, 100u, 132u, 200u } ) {
      std::string words;
      for ( const std::string &line : tableOf( wide, columns ) ) {
         EXPECT_LE( Screen::widthOf( line ), columns ) << line;
         words += line + " ";
      }
      for ( const char *word : { "0x70", "scd(4):1:2:", "acknowledge;", "P2306A0017" } )
         EXPECT_THAT( words, ::testing::HasSubstr( word ) ) << columns;
   }
}

} // namespace

} // namespace HostTest
