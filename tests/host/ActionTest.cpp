#include "host/plugin/Action.h"

#include <gmock/gmock.h>

namespace Host {
namespace {

using ::testing::HasSubstr;

Action good( BoardFiles::Kind kind, const std::vector<std::string> &words ) {
   const auto parsed = parseAction( kind, words );
   EXPECT_TRUE( std::holds_alternative<Action>( parsed ) ) << std::get<std::string>( parsed );
   return std::get<Action>( parsed );
}

std::string bad( BoardFiles::Kind kind, const std::vector<std::string> &words ) {
   const auto parsed = parseAction( kind, words );
   EXPECT_TRUE( std::holds_alternative<std::string>( parsed ) );
   return std::get<std::string>( parsed );
}

TEST( ActionTest, TakesTheWordsOfEveryKind ) {
   EXPECT_EQ( good( BoardFiles::Kind::Fan, { "9000" } ), ( Action{ "set_rpm", { 9000 } } ) );
   EXPECT_EQ( good( BoardFiles::Kind::Led, { "off" } ), ( Action{ "set_light_setting", { 0 } } ) );
   EXPECT_EQ( good( BoardFiles::Kind::Led, { "beacon" } ),
              ( Action{ "set_light_setting", { 6 } } ) );
   EXPECT_EQ( good( BoardFiles::Kind::Xcvr, { "reset", "on" } ), ( Action{ "set_reset", { 1 } } ) );
   EXPECT_EQ( good( BoardFiles::Kind::Xcvr, { "lpmode", "off" } ),
              ( Action{ "set_lp_mode", { 0 } } ) );
   EXPECT_EQ( good( BoardFiles::Kind::Xcvr, { "txdisable", "on" } ),
              ( Action{ "set_tx_disable", { 1 } } ) );
   EXPECT_EQ( good( BoardFiles::Kind::Gpio, { "clear" } ), ( Action{ "bit_clear", {} } ) );
   EXPECT_EQ( good( BoardFiles::Kind::System, { "powercycle" } ), ( Action{ "powercycle", {} } ) );
}

TEST( ActionTest, TakesEveryOperationOfAProxyWithDecimalAndHexNumbers ) {
   using Words = std::vector<std::string>;
   const std::vector<std::pair<Words, Action>> all{
      { { "quick-command", "1" }, { "quick_command", { 1 } } },
      { { "receive-byte" }, { "receive_byte", {} } },
      { { "send-byte", "0xfF" }, { "send_byte", { 255 } } },
      { { "read-byte", "0x10" }, { "read_byte", { 16 } } },
      { { "write-byte", "16", "3" }, { "write_byte", { 16, 3 } } },
      { { "read-word", "0" }, { "read_word", { 0 } } },
      { { "write-word", "1", "0xBEEF" }, { "write_word", { 1, 0xBEEF } } },
      { { "block-read", "0x9A" }, { "block_read", { 0x9A } } },
      { { "block-write", "1", "2", "3" }, { "block_write", { 1, 2, 3 } } },
      { { "i2c-block-read", "1", "16" }, { "i2c_block_read", { 1, 16 } } },
      { { "i2c-block-write", "1" }, { "i2c_block_write", { 1 } } },
      { { "clear-faults" }, { "clear_faults", {} } },
      { { "process-call", "1", "2" }, { "process_call", { 1, 2 } } },
      { { "block-process-call", "1", "2" }, { "block_process_call", { 1, 2 } } },
   };
   for ( const auto &[words, action] : all )
      EXPECT_EQ( good( BoardFiles::Kind::Smbus, words ), action ) << words[0];
   EXPECT_EQ( usageOf( BoardFiles::Kind::Smbus ).size(), all.size() );
}

TEST( ActionTest, SaysWhatIsWrong ) {
   EXPECT_EQ( bad( BoardFiles::Kind::Led, { "green" } ),
              "\"green\" is not one of: off, good, warning, bad, inactive, unknown, beacon" );
   EXPECT_EQ( bad( BoardFiles::Kind::Fan, { "-1" } ),
              "\"-1\" is not a valid RPM (0 to 2147483647)" );
   EXPECT_EQ( bad( BoardFiles::Kind::Fan, {} ), "usage: RPM" );
   EXPECT_EQ( bad( BoardFiles::Kind::Xcvr, { "reset" } ), "usage: reset off|on" );
   EXPECT_THAT( bad( BoardFiles::Kind::Gpio, { "toggle" } ),
                HasSubstr( "usage, one of: set; clear; read" ) );
   EXPECT_EQ( bad( BoardFiles::Kind::Psu, { "off" } ), "there are no commands for a psu" );
   EXPECT_EQ( bad( BoardFiles::Kind::Smbus, { "read-byte", "256" } ),
              "\"256\" is not a valid COMMAND (0 to 255)" );
   EXPECT_EQ( bad( BoardFiles::Kind::Smbus, { "i2c-block-read", "1", "0" } ),
              "\"0\" is not a valid LENGTH (1 to 255)" );
   EXPECT_EQ( bad( BoardFiles::Kind::Smbus, { "write-byte", "1", "0x" } ),
              "\"0x\" is not a valid BYTE (0 to 255)" );
   EXPECT_EQ( bad( BoardFiles::Kind::Smbus, { "send-byte", "1", "2" } ), "usage: send-byte BYTE" );
   std::vector<std::string> long256{ "block-write", "1" };
   long256.resize( 2 + 256, "0" );
   EXPECT_EQ( bad( BoardFiles::Kind::Smbus, long256 ), "usage: block-write COMMAND BYTE..." );
}

} // namespace
} // namespace Host
