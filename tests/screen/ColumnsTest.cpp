#include "screen/Columns.h"

#include <gmock/gmock.h>

namespace Screen {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const Rows rows{ { "NAME", "TYPE", "VALUE", "FAULT" },
                 { "t1", "sensor", "25 °C", "-" },
                 { "psu1-slot", "slot", "850 W front to back", "no answer from 0x58" } };

TEST( ColumnsTest, StandBelowEachOther ) {
   EXPECT_THAT( inColumns( rows ),
                ElementsAre( "NAME       TYPE    VALUE                FAULT",
                             "t1         sensor  25 °C                -",
                             "psu1-slot  slot    850 W front to back  no answer from 0x58" ) );
   EXPECT_EQ( inColumns( rows, 60 ), inColumns( rows ) );
   EXPECT_THAT( inColumns( {} ), IsEmpty() );
   EXPECT_THAT( inColumns( {}, 10 ), IsEmpty() );
}

TEST( ColumnsTest, NotesThenStandBelowTheirRow ) {
   EXPECT_THAT( inColumns( rows, 50, { .hasNotes = true } ),
                ElementsAre( "NAME       TYPE    VALUE", "t1         sensor  25 °C",
                             "psu1-slot  slot    850 W front to back", "  no answer from 0x58" ) );
}

TEST( ColumnsTest, ThenColumnsAreLeftOutAndSaidToBe ) {
   EXPECT_THAT( inColumns( rows, 31, { .hasNotes = true, .dispensable = { 1 } } ),
                ElementsAre( "NAME       VALUE", "t1         25 °C",
                             "psu1-slot  850 W front to back", "  no answer from 0x58",
                             "(TYPE: no room in 31 columns)" ) );
}

TEST( ColumnsTest, ThenCellsWrap ) {
   EXPECT_THAT( inColumns( rows, 25, { .hasNotes = true, .dispensable = { 1 }, .wrapped = 2 } ),
                ElementsAre( "NAME       VALUE", "t1         25 °C", "psu1-slot  850 W front to",
                             "           back", "  no answer from 0x58", "(TYPE: no room in 25",
                             " columns)" ) );
}

TEST( ColumnsTest, ThenCellsAreShortenedWithAMark ) {
   EXPECT_THAT( inColumns( { { "NAME", "VALUE" }, { "a-long-name", "12" } }, 12 ),
                ElementsAre( "NAME   VALUE", "a-lo…  12" ) );
}

} // namespace
} // namespace Screen
