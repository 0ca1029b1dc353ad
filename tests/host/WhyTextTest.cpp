// What orbis-host why prints.
#include "host/terminal/WhyText.h"

#include <fmt/ranges.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace Host {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::Le;
using ::testing::Not;
using ::testing::SizeIs;

class WhyTextTest : public ::testing::Test {
 protected:
   WhyTextTest() { ::setenv( "TZ", "UTC", 1 ); }

   static Health::WallTime at( int second ) {
      return Health::WallTime( std::chrono::seconds( second ) );
   }
   static Why fan() {
      const BoardFiles::ChipPlace chip{ "scd(4):1:2", "0x70=1 0x71=4", 0x58 };
      Why why{ .board = "/b",
               .object = { .name = "psu1-fan1", .type = "fan" },
               .chips = { chip },
               .driver = "Pmbus",
               .did = 21,
               .on = { "psu1", "psu1-slot" } };
      why.object.values = { { { .name = "speed", .unit = "rpm", .value = int64_t{ 900 } }, 0.4 } };
      why.object.health =
         Health::ObjectHealth{ .level = Health::Level::Critical, .cause = "psu1 input lost" };
      why.object.health->values = { { .level = Health::Level::Critical,
                                      .since = at( 60 ),
                                      .changes = 1,
                                      .crossed = "below the critical limit of 1500 rpm",
                                      .limits = BoardFiles::ValueLimits{ .lowCritical = 1500 },
                                      .lowest = Health::Extreme{ 900, at( 60 ) },
                                      .highest = Health::Extreme{ 9000, at( 1 ) },
                                      .last = { { 9000, at( 59 ) }, { 900, at( 60 ) } } } };
      why.chain = { { "psu1-fan1", Health::Level::Critical, "speed is below" },
                    { "psu1", Health::Level::Critical, "ok" } };
      why.causes = { { .key = "psu1 input lost",
                       .object = "psu1",
                       .level = Health::Level::Critical,
                       .words = "input undervoltage",
                       .since = at( 58 ),
                       .explains = { "psu1-fan1", "supplies" } } };
      why.neighbours = { { chip, { "psu1", "psu1-fan1" }, true },
                         { { chip.bus, chip.path, 0x50 }, { "psu1-fru" }, {} } };
      why.transfers = { { chip, 0.4, "read of 2 bytes from 0x58 register 0x90", "84 03", "" },
                        { chip, 0.1, "read of 2 bytes from 0x58 register 0x91", "", "timed out" } };
      why.registers = { { chip,
                          "psu1-status",
                          "",
                          { { { 0x79, 2, "STATUS_WORD" }, 0x2848, "" },
                            { { 0x7A, 1, "STATUS_VOUT" }, 0, "" },
                            { { 0x7B, 1, "STATUS_IOUT" }, {}, "timed out" } } } };
      why.events = { { .id = 3,
                       .time = at( 58 ),
                       .cause = "psu1 input lost",
                       .level = Health::Level::Critical,
                       .words = "input undervoltage" } };
      return why;
   }
};

TEST_F( WhyTextTest, IsOneScreenWithAllOfOneObject ) {
   EXPECT_EQ( fmt::format( "{}", fmt::join( linesOf( fan(), 80 ), "\n" ) ),
              R"(psu1-fan1: fan, ok, critical
where       bus scd(4):1:2, multiplexer 0x70 channel 1, multiplexer 0x71 channel
              4, chip 0x58
            driver Pmbus, did 21
            on psu1, on psu1-slot
values      speed: 900 rpm, critical, 0.4 s old
              below the critical limit of 1500 rpm
              limits: critical below 1500.0 rpm
              critical since 1970-01-01 00:01:00; 1 change of level before
              lowest 900.0 rpm at 1970-01-01 00:01:00, highest 9000.0 rpm at
                1970-01-01 00:00:01
              last, 00:00:59 to 00:01:00: 9000.0, 900.0
why         psu1-fan1: critical, speed is below
            psu1: critical, ok
            because of "psu1 input lost": input undervoltage
              critical since 1970-01-01 00:00:58
              explains psu1-fan1, supplies
neighbours  0x58 answers: psu1, psu1-fan1
            0x50 is not read: psu1-fru
transfers   0.4 s ago: read of 2 bytes from 0x58 register 0x90: 84 03
            0.1 s ago: read of 2 bytes from 0x58 register 0x91: timed out
registers   of 0x58, through psu1-status:
              0x79 STATUS_WORD              0x2848
              0x7a STATUS_VOUT              0x00
              0x7b STATUS_IOUT              timed out
events      1970-01-01 00:00:58  critical  psu1 input lost: input undervoltage)" );
}

TEST_F( WhyTextTest, NoLineIsLongerThanTheTerminal ) {
   EXPECT_THAT( linesOf( fan(), 80 ), Each( SizeIs( Le( 80u ) ) ) );
   EXPECT_THAT( linesOf( fan(), 60 ), Each( SizeIs( Le( 60u ) ) ) );
}

TEST_F( WhyTextTest, NothingIsCutOrWrappedWithoutATerminal ) {
   EXPECT_THAT(
      linesOf( fan(), 0 ),
      Contains( "where       bus scd(4):1:2, multiplexer 0x70 channel 1, multiplexer 0x71 "
                "channel 4, chip 0x58" ) );
}

TEST_F( WhyTextTest, SaysInALineWhatIsNotKnown ) {
   Why why{ .object = { .name = "system", .type = "system" } };
   why.whyNoTransfers = "/run/orbis/smbus.sock.control: there is no such file";
   why.registers = { { {}, "", "no SMBus object of the board reaches this chip", {} } };
   why.leftAlone = { "scd(4):1:2: the bus is quarantined for 3 s (timed out), next try in 1 s" };
   const std::string text = fmt::format( "{}", fmt::join( linesOf( why, 0 ), "\n" ) );
   EXPECT_THAT( text,
                HasSubstr( "\ntransfers   scd(4):1:2: the bus is quarantined for 3 s (timed out), "
                           "next try in 1 s\n" ) );
   EXPECT_THAT( text, HasSubstr( "\nwhere       no chip of its own\n" ) );
   EXPECT_THAT( text, HasSubstr( "\nvalues      none are read\nwhy         no cause is known\n"
                                 "neighbours  none\n" ) );
   EXPECT_THAT( text, HasSubstr( "\n            not known: /run/orbis/smbus.sock.control: there is "
                                 "no such file\n" ) );
   EXPECT_THAT( text, HasSubstr( ": no SMBus object of the board reaches this chip\n"
                                 "events      none" ) );
}

TEST_F( WhyTextTest, OfAGoodObjectNothingIsWrong ) {
   const Why why{ .object = { .name = "temp", .health = Health::ObjectHealth() },
                  .chain = { { "temp", Health::Level::Ok, "ok" } } };
   EXPECT_THAT( linesOf( why, 0 ), Contains( "why         nothing is wrong" ) );
}

TEST_F( WhyTextTest, LongListsEndAtATerminalWithTheNumberOfTheOthers ) {
   Why why{ .neighbours = {
               { { "i2c:0", "", 0x32 }, std::vector<std::string>( 20, "sfp" ), true } } };
   EXPECT_THAT( linesOf( why, 0 ), Contains( HasSubstr( "sfp, sfp" ) ).Times( 1 ) );
   EXPECT_THAT( linesOf( why, 0 ), Contains( Not( HasSubstr( "more" ) ) ).Times( 8 ) );
   EXPECT_THAT( linesOf( why, 200 ), Contains( HasSubstr( "sfp, sfp and 8 more" ) ) );
}

TEST_F( WhyTextTest, TheFaultsWordsAreTold ) {
   Why why{ .object = { .name = "temp",
                        .type = "temp_sensor",
                        .state = State::Unreadable,
                        .fault = { 6, "no acknowledge" } } };
   EXPECT_EQ( linesOf( why, 0 )[0],
              "temp: temp_sensor, unreadable: status 6 (transaction): no acknowledge" );
}

} // namespace
} // namespace Host
