// What each fault of a chip looks like to a user of the host, for each kind of object.
#include "RunningBoard.h"

#include <gmock/gmock.h>

#include <chrono>
#include <functional>
#include <ostream>

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
using Words = std::vector<std::string>;

class ChipFaultTest : public ::testing::Test {
 protected:
   static constexpr const char *limit = "300"; // ms of a transaction
   RunningBoard board{ "kelt", { "--transaction-limit", limit } };
   // A bus that was held is tried again a second later.
   static bool isDoneSoon( const std::function<int()> &exitCodeOf ) {
      const auto end = std::chrono::steady_clock::now() + std::chrono::seconds( 20 );
      while ( exitCodeOf() != 0 )
         if ( std::chrono::steady_clock::now() > end )
            return false;
      return true;
   }
};

// A reading with a fault: the state of its object, and parts of the reason.
struct Read {
   const char *name;
   Words fault;
   const char *object;
   const char *state;
   Words why;

   friend void PrintTo( const Read &row, std::ostream *out ) { *out << row.name; }
};

class FaultyReading : public ChipFaultTest, public ::testing::WithParamInterface<Read> {};

TEST_P( FaultyReading, IsReportedWithItsReasonAndOnlyThere ) {
   const Read &row = GetParam();
   Words words = { "sim" };
   words.insert( words.end(), row.fault.begin(), row.fault.end() );
   ASSERT_THAT( board.smbus( words ), testing::StartsWith( "done: " ) );
   const Shown shown = board.show();
   ASSERT_TRUE( shown.faults.contains( row.object ) ) << row.object << " shows nothing wrong";
   EXPECT_THAT( shown.faults.at( row.object ), StartsWith( row.state ) );
   for ( const std::string &why : row.why )
      EXPECT_THAT( shown.faults.at( row.object ), HasSubstr( why ) );
   EXPECT_FALSE( shown.faults.contains( "temp-cpu" ) ) << shown.faults.at( "temp-cpu" );

   ASSERT_THAT( board.smbus( { "sim", "clear", row.fault[1] } ), testing::StartsWith( "done: " ) );
   EXPECT_TRUE( isDoneSoon( [this] { return board.show().exitCode; } ) );
}

constexpr const char *noAcknowledge = "no acknowledge of the address";
constexpr const char *alertAssertion =
   "Assertion `device_->setThreshold( Threshold::Alert, value ) == PL_STATUS_OK' failed";
constexpr const char *byteAssertion = "Assertion `data.size() == 1' failed";
constexpr const char *wordAssertion = "Assertion `data.size() == 2' failed";

INSTANTIATE_TEST_SUITE_P(
   Board, FaultyReading,
   ::testing::Values(
      Read{ "AThermometerThatIsSilent",
            { "nack", "temp-rear" },
            "temp-rear",
            "unreadable",
            { alertAssertion } },
      Read{ "AThermometerBehindASilentMux",
            { "nack", "mux-main" },
            "temp-rear",
            "unreadable",
            { alertAssertion } },
      Read{ "AThermometerOnAStuckBus",
            { "stuck", "temp-rear" },
            "temp-front", // its neighbour on the root bus
            "unreadable",
            { alertAssertion } },
      Read{ "AThermometersAnswerTooShort",
            { "answer-size", "temp-rear", "1" },
            "temp-rear",
            "unreadable",
            { wordAssertion } },
      Read{ "AFansAnswerTooLong",
            { "answer-size", "fan-outlets", "2" },
            "fan1",
            "unreadable",
            { byteAssertion } },
      Read{ "AFanWhoseControllerIsSilent",
            { "nack", "fan-inlets" },
            "fan1",
            "unreadable",
            { "read of 1 byte from 0x2e register 0x3f on scd(4):1:5", noAcknowledge } },
      Read{ "AFanSlotWhosePinsAreSilent",
            { "nack", "fan-pins" },
            "fan1-slot",
            "unreadable",
            { "read of 1 byte from 0x20 register 0x01 on scd(4):1:5", noAcknowledge } },
      Read{ "ASupplyThatIsSilent",
            { "nack", "psu1" },
            "psu1",
            "unreadable",
            { "from 0x58", noAcknowledge } },
      Read{ "ASuppliesAnswerTooLong",
            { "answer-size", "psu1", "3" },
            "psu1",
            "unreadable",
            { wordAssertion } },
      Read{ "ASuppliesFanThatIsSilent",
            { "nack", "psu2" },
            "psu2-fan2",
            "unreadable",
            { "from 0x59 register 0x91", noAcknowledge } },
      Read{ "ASlotWhoseSupplyIsSilentByPmbus", { "nack", "psu1" }, "psu1-slot", "absent", {} },
      Read{ "ASlotWhoseSupplyIsSilentByIpmi", { "nack", "psu2-fru" }, "psu2-slot", "absent", {} },
      Read{ "ASlotWhoseSupplyHoldsTheBus",
            { "stuck", "psu2-fru" },
            "psu2-slot",
            "unreadable",
            { "the data line is held low by psu2-fru" } },
      Read{ "ASlotWhoseSupplyIsTooSlow",
            { "slow", "psu1", "400" },
            "psu1-slot",
            "unreadable",
            { "not started: the time limit of 300 ms is over" } },
      Read{ "ASlotWhoseFruIsCorrupt",
            { "corrupt", "psu2-fru", "4", "0xff" },
            "psu2-slot",
            "unreadable",
            { "Expected type code 3 (8-bit ASCII)" } },
      Read{ "ASlotWhoseModelIsCorrupt",
            { "corrupt", "psu1", "0x9a", "0x01" },
            "psu1-slot",
            "unmanaged",
            {} },
      Read{ "CagesWhoseCpldIsSilent",
            { "nack", "cpld-qsfp" },
            "qsfp32",
            "unreadable",
            { "from 0x32", noAcknowledge } },
      Read{ "AGpioWhoseCpldIsSilent",
            { "nack", "cpld" },
            "usb-power",
            "unreadable",
            { "read of 1 byte from 0x31 register 0x110 on celestica:1:1", noAcknowledge } },
      Read{ "AGpiosAnswerEmpty",
            { "answer-size", "cpld", "0" },
            "usb-power",
            "unreadable",
            { byteAssertion } } ),
   []( const auto &row ) { return row.param.name; } );

// An action with a fault: parts of its error.
struct Act {
   const char *name;
   Words fault;
   Words action;
   Words why;

   friend void PrintTo( const Act &row, std::ostream *out ) { *out << row.name; }
};

class FaultyAction : public ChipFaultTest, public ::testing::WithParamInterface<Act> {};

TEST_P( FaultyAction, IsReportedWithItsReasonAndWorksOnceCleared ) {
   const Act &row = GetParam();
   Words words = { "sim" };
   words.insert( words.end(), row.fault.begin(), row.fault.end() );
   ASSERT_THAT( board.smbus( words ), testing::StartsWith( "done: " ) );
   const Ran ran = board.host( row.action );
   EXPECT_EQ( ran.exitCode, 1 );
   EXPECT_THAT( ran.errors, HasSubstr( ": failed: " ) );
   for ( const std::string &why : row.why )
      EXPECT_THAT( ran.errors, HasSubstr( why ) );
   ASSERT_THAT( board.smbus( { "sim", "clear", row.fault[1] } ), testing::StartsWith( "done: " ) );
   EXPECT_TRUE( isDoneSoon( [&] { return board.host( row.action ).exitCode; } ) );
}

INSTANTIATE_TEST_SUITE_P(
   Board, FaultyAction,
   ::testing::Values(
      Act{ "AFanWhoseControllerIsSilent",
           { "nack", "fan-inlets" },
           { "fan", "fan1", "9000" },
           { "status 6", "write of 1 byte to 0x2e register 0x30", noAcknowledge } },
      Act{ "ASuppliesFanWithAWrongPacketErrorCode",
           { "bad-pec", "psu1" },
           { "fan", "psu1-fan1", "9000" },
           { "status 6", "write of 2 bytes to 0x58 register 0x3b", "no acknowledge of the PEC" } },
      Act{ "TheSystemLed",
           { "nack", "cpld-sfp" },
           { "led", "system-led", "good" },
           { "status 6", "from 0x33 register 0x303", noAcknowledge } },
      Act{ "ASupplysLed",
           { "stuck", "cpld-sfp" },
           { "led", "psu1-led", "good" },
           { "status 6", "the data line is held low by cpld-sfp" } },
      Act{ "ACage",
           { "nack", "cpld-qsfp" },
           { "xcvr", "qsfp1", "reset", "on" },
           { "status 6", "write of 1 byte to 0x32 register 0x250", noAcknowledge } },
      Act{ "AGpio",
           { "nack", "cpld" },
           { "gpio", "usb-power", "set" },
           { "status 6", "from 0x31 register 0x110", noAcknowledge } },
      Act{ "AProxyWhoseModuleIsSilent",
           { "nack", "qsfp1-eeprom" },
           { "smbus", "qsfp1-eeprom", "read-byte", "0" },
           { "status 6", "request 2 of 3", "on scd(4):2:0", noAcknowledge } },
      Act{ "AProxysAnswerTooShort",
           { "answer-size", "qsfp1-eeprom", "3" },
           { "smbus", "qsfp1-eeprom", "i2c-block-read", "0", "8" },
           { "status 4" } },
      Act{ "AProxysByteTooLong",
           { "answer-size", "qsfp1-eeprom", "3" },
           { "smbus", "qsfp1-eeprom", "read-byte", "0" },
           { byteAssertion } },
      Act{ "PowerCycle",
           { "nack", "cpld" },
           { "system", "powercycle", "--yes" },
           { "status 6", "from 0x31 register 0x102", noAcknowledge } },
      Act{ "PowerOff",
           { "nack", "fan-pins" },
           { "system", "poweroff", "--yes" },
           { "status 6", "from 0x20 register 0x0a", noAcknowledge } } ),
   []( const auto &row ) { return row.param.name; } );

TEST_F( ChipFaultTest, ACorruptedReadingIsShown ) {
   board.smbus( { "sim", "corrupt", "temp-rear", "0", "0x20" } );
   EXPECT_EQ( board.show().values.at( "temp-rear temperature" ), 31 + 32 );
}

TEST_F( ChipFaultTest, AWrongBlockCountReturnsThatNumberOfBytes ) {
   const Words read = { "smbus", "qsfp1-eeprom", "block-read", "0" };
   EXPECT_EQ( board.host( read ).output.size(), size_t( 0x11 * 3 ) ); // its first byte counts
   board.smbus( { "sim", "block-count", "qsfp1-eeprom", "3" } );
   EXPECT_EQ( board.host( read ).output.size(), size_t( 3 * 3 ) );
}

TEST_F( ChipFaultTest, ASlowChipWithinTheLimitIsRead ) {
   board.smbus( { "sim", "slow", "temp-rear", "50" } );
   EXPECT_EQ( board.show().values.at( "temp-rear temperature" ), 31 );
}

TEST_F( ChipFaultTest, ALedOfASilentExpanderSaysNothing ) {
   board.smbus( { "sim", "nack", "fan-pins" } );
   // The driver writes nothing when it can't read the pins.
   EXPECT_EQ( board.host( { "led", "fan1-led", "good" } ).exitCode, 0 );
}

} // namespace
