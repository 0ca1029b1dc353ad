#include "health/pmbus/Bits.h"
#include "health/pmbus/Conditions.h"

#include <bit>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>

namespace HealthTest {

namespace {

using namespace Health;
using namespace Health::Pmbus;
using Kind = Condition::Kind;
using ::testing::ElementsAre;

TEST( PmbusConditionsTest, SaysWhatIsWrongInOneSentence ) {
   const struct {
      Registers registers;
      const char *words;
   } rows[] = {
      { { { 0x79, 0x0000 } }, "ok" },
      { {}, "ok" },
      // The mains are lost: off, not good, and the input register says why.
      { { { 0x79, 0x2848 }, { 0x7C, 0x18 } },
        "input undervoltage, unit off for insufficient input voltage" },
      { { { 0x79, 0x8841 }, { 0x7A, 0x10 } }, "output undervoltage" },
      { { { 0x79, 0x0400 }, { 0x81, 0x40 } }, "fan 2 failed" },
      { { { 0x79, 0x0404 }, { 0x7D, 0x40 }, { 0x81, 0x80 } }, "fan 1 failed, temperature is high" },
      { { { 0x79, 0x4001 }, { 0x7B, 0x20 } }, "output current is high" },
      { { { 0x79, 0x0002 }, { 0x7E, 0xA0 } },
        "refused a command that it does not know, received a wrong packet error code" },
      // A register that was not read: its bit of the word is told.
      { { { 0x79, 0x0004 } }, "temperature fault or warning" },
      // The special bit of the word says more than the general one.
      { { { 0x79, 0x2848 } }, "input undervoltage" },
      { { { 0x79, 0xC871 } }, "output overvoltage, output overcurrent" },
      // Read, but the bit has gone since.
      { { { 0x79, 0x0400 }, { 0x81, 0x00 } }, "fan fault or warning" },
      // Turned off by a command, and nothing is wrong.
      { { { 0x79, 0x0840 } }, "output is off" },
      { { { 0x79, 0x0800 } }, "output power is not good" },
      { { { 0x79, 0x1200 } }, "fault or warning of its maker, another fault or warning" },
   };
   for ( const auto &row : rows )
      EXPECT_EQ( sentence( describe( row.registers ) ), row.words ) << toText( row.registers );
}

TEST( PmbusConditionsTest, TellsInputOutputFanAndTemperatureApart ) {
   const struct {
      Registers registers;
      Kind kind;
      Level level;
   } rows[] = {
      { { { 0x79, 0x2848 }, { 0x7C, 0x08 } }, Kind::InputLost, Level::Critical },
      { { { 0x79, 0x2000 }, { 0x7C, 0x20 } }, Kind::Other, Level::Warning },
      { { { 0x79, 0x2000 }, { 0x7C, 0x80 } }, Kind::Other, Level::Critical },
      { { { 0x79, 0x8841 }, { 0x7A, 0x10 } }, Kind::OutputFailed, Level::Critical },
      { { { 0x79, 0x4850 }, { 0x7B, 0x80 } }, Kind::OutputFailed, Level::Critical },
      { { { 0x79, 0x0840 } }, Kind::OutputFailed, Level::Critical },
      { { { 0x79, 0x0400 }, { 0x81, 0x80 } }, Kind::FanFailed, Level::Critical },
      { { { 0x79, 0x0400 }, { 0x81, 0x10 } }, Kind::FanFailed, Level::Warning },
      { { { 0x79, 0x0004 }, { 0x7D, 0x80 } }, Kind::OverTemperature, Level::Critical },
      { { { 0x79, 0x0004 }, { 0x7D, 0x40 } }, Kind::OverTemperature, Level::Warning },
      { { { 0x79, 0x0004 }, { 0x7D, 0x10 } }, Kind::Other, Level::Critical },
      { { { 0x79, 0x0002 }, { 0x7E, 0x20 } }, Kind::Communication, Level::Warning },
      // Whoever asked is to blame, not the supply.
      { { { 0x79, 0x0002 }, { 0x7E, 0x80 } }, Kind::Communication, Level::Ok },
   };
   for ( const auto &row : rows ) {
      const auto conditions = describe( row.registers );
      ASSERT_EQ( conditions.size(), 1 ) << toText( row.registers );
      EXPECT_EQ( conditions[0].kind, row.kind ) << toText( row.registers );
      EXPECT_EQ( conditions[0].level, row.level ) << toText( row.registers );
   }
}

// OFF and POWER_GOOD# follow the present; the register keeps what was.
TEST( PmbusConditionsTest, AFaultThatTookTheOutputAwayIsOverWhenTheOutputIsGood ) {
   EXPECT_THAT(
      describe( { { 0x79, 0x2008 }, { 0x7C, 0x18 } } ),
      ElementsAre( Condition{ Kind::InputLost, Level::Warning, "input undervoltage (over)" },
                   Condition{ Kind::InputLost, Level::Warning,
                              "unit off for insufficient input voltage (over)" } ) );
}

TEST( PmbusConditionsTest, AFanOrTemperatureIsNotKnownToBeOver ) {
   EXPECT_THAT( describe( { { 0x79, 0x0400 }, { 0x81, 0x80 } } ),
                ElementsAre( Condition{ Kind::FanFailed, Level::Critical, "fan 1 failed" } ) );
}

TEST( PmbusConditionsTest, EveryBitOfEveryRegisterHasANameAndWordsOfItsOwn ) {
   std::map<uint8_t, unsigned> seen;
   std::set<std::string_view> names, words;
   for ( const DetailBit &bit : detailBits() ) {
      EXPECT_EQ( std::popcount( bit.mask ), 1 ) << bit.name;
      EXPECT_FALSE( seen[bit.command] & bit.mask ) << bit.name;
      seen[bit.command] |= bit.mask;
      EXPECT_TRUE( names.insert( bit.name ).second ) << bit.name;
      EXPECT_TRUE( words.insert( bit.words ).second ) << bit.words;
   }
   EXPECT_EQ( seen, ( std::map<uint8_t, unsigned>{ { 0x7A, 0xFF },
                                                   { 0x7B, 0xFF },
                                                   { 0x7C, 0xFF },
                                                   { 0x7D, 0xF0 },
                                                   { 0x7E, 0xFB },
                                                   { 0x81, 0xFF } } ) );
   unsigned word = 0;
   for ( const SummaryBit &bit : summaryBits() )
      word |= bit.mask;
   EXPECT_EQ( word, 0xFFFE );
}

} // namespace

} // namespace HealthTest
