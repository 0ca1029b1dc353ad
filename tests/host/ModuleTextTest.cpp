// Modules for people.
#include "host/terminal/ModuleText.h"

#include "screen/Width.h"

#include <gmock/gmock.h>

namespace Host {
namespace {

using Optics::Quantity;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;
using ::testing::Not;

CageModule shownModule() {
   return { .cage = "qsfp1",
            .age = 3.4,
            .module = Optics::Module{
               .standard = Optics::Standard::Sff8636,
               .revision = "8636 2.8 to 2.10",
               .identifier = { 0x11, "QSFP28" },
               .vendor = "Orbis Optics",
               .oui = "00:1b:21",
               .partNumber = "OQ-100G-SR4",
               .vendorRevision = "B1",
               .serial = "OQ241037",
               .dateCode = "240202",
               .date = "2024-02-02",
               .extendedCompliance = Optics::Code{ 2, "100GBASE-SR4 or 25GBASE-SR" },
               .lengths = { { "OM3", 70, false }, { "OM4", 508, true } },
               .monitors = { { .quantity = Quantity::Temperature,
                               .unit = "°C",
                               .value = 44.61,
                               .thresholds = { 75, -5, 70, 0 } },
                             { .quantity = Quantity::RxPower,
                               .lane = 1,
                               .unit = "mW",
                               .value = 0.7712,
                               .thresholds = { .highAlarm = 2.188, .lowAlarm = 0.0676 } },
                             { .quantity = Quantity::RxPower,
                               .lane = 2,
                               .unit = "mW",
                               .value = 0,
                               .flags = { .lowAlarm = true } },
                             { .quantity = Quantity::RxPower, .lane = 3, .unit = "mW" } },
               .lanes = { { .number = 1 },
                          { .number = 2, .txDisabled = true },
                          { .number = 3, .txDisabled = true } },
               .findings = { "CC_BASE is wrong" } } };
}

TEST( ModuleTextTest, TellsAllOfOneModule ) {
   EXPECT_THAT(
      linesOf( shownModule(), 80 ),
      ElementsAre(
         "qsfp1: QSFP28, read 3 s ago", "vendor        Orbis Optics (00:1b:21)",
         "part          OQ-100G-SR4, revision B1", "serial        OQ241037",
         "made          2024-02-02", "standard      SFF-8636 2.8 to 2.10",
         "for           100GBASE-SR4 or 25GBASE-SR",
         "length        70 m of OM3, more than 508 m of OM4", "",
         "                                                  low      low     high     high",
         "                         value           dBm    alarm  warning  warning    alarm",
         "temperature            44.6 °C                   -5.0      0.0     70.0     75.0",
         "rx_power_1           0.7712 mW          -1.1   0.0676        -        -   2.1880",
         "rx_power_2           0.0000 mW -40.0 or less        -        -        -        -",
         "rx_power_3                   -                      -        -        -        -", "",
         "lanes 2 to 3: transmitter off", "", "flags: rx_power_2 low alarm",
         "note: CC_BASE is wrong" ) );
}

TEST( ModuleTextTest, IsNotWiderThanTheTerminal ) {
   CageModule wide = shownModule();
   wide.module->findings = { std::string( 30, 'x' ) + " " + std::string( 30, 'y' ) + " " +
                             std::string( 30, 'z' ) };
   wide.module->compliance = std::vector<std::string>( 20, "10GBASE-SR" );
   for ( const std::string &line : linesOf( wide, 80 ) )
      EXPECT_LE( Screen::widthOf( line ), 80u ) << line;
}

TEST( ModuleTextTest, AnEmptyCageAndOneThatCantBeReadAreTold ) {
   EXPECT_THAT( linesOf( { .cage = "qsfp2", .state = State::Absent }, 0 ),
                ElementsAre( "qsfp2: absent" ) );
   EXPECT_THAT(
      linesOf( { .cage = "qsfp2", .state = State::Unreadable, .fault = { .words = "no answer" } },
               0 ),
      ElementsAre( "qsfp2: unreadable (no answer)" ) );
}

TEST( ModuleTextTest, ShowsEachModuleOnALine ) {
   const auto table = tableOf(
      { shownModule(),
        { .cage = "qsfp2", .state = State::Absent },
        { .cage = "qsfp3", .state = State::Unreadable, .fault = { .words = "no answer" } } } );
   EXPECT_THAT(
      table,
      ElementsAre( "CAGE   VENDOR        PART         SERIAL    TYPE          °C    RX dBm       "
                   " WORST",
                   "qsfp1  Orbis Optics  OQ-100G-SR4  OQ241037  100GBASE-SR4  44.6  -1.1 <=-40 -  "
                   "rx_power_2 low alarm",
                   "qsfp3  -             -            -         -             -     -            "
                   " unreadable (no answer)",
                   "1 of 3 cages are empty" ) );
}

TEST( ModuleTextTest, AtATerminalOf80TheTableFitsAndTheWorstIsWhole ) {
   EXPECT_THAT(
      tableOf(
         { shownModule(),
           { .cage = "qsfp3", .state = State::Unreadable, .fault = { .words = "no answer" } } },
         80 ),
      ElementsAre( "CAGE   VENDOR        PART         SERIAL    TYPE          °C    RX dBm",
                   "qsfp1  Orbis Optics  OQ-100G-SR4  OQ241037  100GBASE-SR4  44.6  -1.1 <=-40 -",
                   "  rx_power_2 low alarm",
                   "qsfp3  -             -            -         -             -     -",
                   "  unreadable (no answer)" ) );
}

TEST( ModuleTextTest, ShowsBytesThatWereNotReadAsDashes ) {
   Optics::Image image;
   const std::vector<uint8_t> bytes{ 0x11, 0xAB };
   image.put( {}, 0, bytes );
   image.put( { 0x50, true, 0, 3 }, 142, bytes );
   EXPECT_THAT( hexLinesOf( image ),
                IsSupersetOf( { "  0: 11 ab -- -- -- -- -- -- -- -- -- -- -- -- -- --", "page 03h",
                                "128: -- -- -- -- -- -- -- -- -- -- -- -- -- -- 11 ab" } ) );
   EXPECT_EQ( hexLinesOf( image ).size(), 17u );
}

} // namespace
} // namespace Host
