#include "host/plugin/Action.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <limits>
#include <optional>
#include <span>

namespace Host {
namespace {

using Words = std::vector<std::string>;

// In the order of pl_led_status.
constexpr std::array<std::string_view, 7> settings{ "off",      "good",    "warning", "bad",
                                                    "inactive", "unknown", "beacon" };
constexpr std::array<std::string_view, 2> onOff{ "off", "on" };

// The rule for one word after the verb: one of some names, or a number in a range.
struct Argument {
   std::string_view name{};
   std::span<const std::string_view> names{};
   int64_t minimum = 0;
   int64_t maximum = 0;
};

constexpr Argument onOffArgument{ .names = onOff };
constexpr Argument settingArgument{ .names = settings };
constexpr Argument rpmArgument{ .name = "RPM", .maximum = std::numeric_limits<int32_t>::max() };
constexpr Argument bitArgument{ .name = "BIT", .maximum = 1 };
constexpr Argument commandArgument{ .name = "COMMAND", .maximum = 0xFF };
constexpr Argument byteArgument{ .name = "BYTE", .maximum = 0xFF };
constexpr Argument wordArgument{ .name = "WORD", .maximum = 0xFFFF };
constexpr Argument lengthArgument{ .name = "LENGTH", .minimum = 1, .maximum = 0xFF };

constexpr size_t longestBlock = 0xFF; // a block's length is one byte

struct Verb {
   BoardFiles::Kind kind;
   std::string_view word; // empty: the arguments come first
   std::string_view operation;
   std::array<Argument, 2> arguments{}; // those without a name and names are unused
   bool bytesFollow = false;            // a block: one word for each byte
};

constexpr std::array verbs{
   Verb{ BoardFiles::Kind::Fan, "", "set_rpm", { rpmArgument } },
   Verb{ BoardFiles::Kind::Led, "", "set_light_setting", { settingArgument } },
   Verb{ BoardFiles::Kind::Xcvr, "reset", "set_reset", { onOffArgument } },
   Verb{ BoardFiles::Kind::Xcvr, "lpmode", "set_lp_mode", { onOffArgument } },
   Verb{ BoardFiles::Kind::Xcvr, "txdisable", "set_tx_disable", { onOffArgument } },
   Verb{ BoardFiles::Kind::Gpio, "set", "bit_set" },
   Verb{ BoardFiles::Kind::Gpio, "clear", "bit_clear" },
   Verb{ BoardFiles::Kind::Gpio, "read", "bit_read" },
   Verb{ BoardFiles::Kind::Smbus, "quick-command", "quick_command", { bitArgument } },
   Verb{ BoardFiles::Kind::Smbus, "receive-byte", "receive_byte" },
   Verb{ BoardFiles::Kind::Smbus, "send-byte", "send_byte", { byteArgument } },
   Verb{ BoardFiles::Kind::Smbus, "read-byte", "read_byte", { commandArgument } },
   Verb{ BoardFiles::Kind::Smbus, "write-byte", "write_byte", { commandArgument, byteArgument } },
   Verb{ BoardFiles::Kind::Smbus, "read-word", "read_word", { commandArgument } },
   Verb{ BoardFiles::Kind::Smbus, "write-word", "write_word", { commandArgument, wordArgument } },
   Verb{ BoardFiles::Kind::Smbus, "block-read", "block_read", { commandArgument } },
   Verb{ BoardFiles::Kind::Smbus, "block-write", "block_write", { commandArgument }, true },
   Verb{ BoardFiles::Kind::Smbus,
         "i2c-block-read",
         "i2c_block_read",
         { commandArgument, lengthArgument } },
   Verb{ BoardFiles::Kind::Smbus, "i2c-block-write", "i2c_block_write", { commandArgument }, true },
   Verb{
      BoardFiles::Kind::Smbus, "process-call", "process_call", { commandArgument, wordArgument } },
   Verb{ BoardFiles::Kind::Smbus,
         "block-process-call",
         "block_process_call",
         { commandArgument },
         true },
   Verb{ BoardFiles::Kind::Smbus, "clear-faults", clearFaults },
   Verb{ BoardFiles::Kind::System, "reload-cause", "get_reload_cause" },
   Verb{ BoardFiles::Kind::System, "powercycle", "powercycle" },
   Verb{ BoardFiles::Kind::System, "poweroff", "poweroff" },
};

bool isUsed( const Argument &argument ) {
   return !argument.name.empty() || !argument.names.empty();
}

std::string usage( const Verb &verb ) {
   std::vector<std::string> words;
   if ( !verb.word.empty() )
      words.emplace_back( verb.word );
   for ( const Argument &argument : verb.arguments )
      if ( isUsed( argument ) )
         words.push_back( argument.names.empty()
                             ? std::string( argument.name )
                             : fmt::format( "{}", fmt::join( argument.names, "|" ) ) );
   if ( verb.bytesFollow )
      words.emplace_back( "BYTE..." );
   return fmt::format( "{}", fmt::join( words, " " ) );
}

std::optional<int64_t> valueOf( std::string_view word, const Argument &argument ) {
   if ( !argument.names.empty() ) {
      const auto found = std::find( argument.names.begin(), argument.names.end(), word );
      if ( found == argument.names.end() )
         return {};
      return found - argument.names.begin();
   }
   const bool isHex = word.starts_with( "0x" ) || word.starts_with( "0X" );
   const std::string_view digits = word.substr( isHex ? 2 : 0 );
   int64_t number = 0;
   const auto [end, failure] =
      std::from_chars( digits.data(), digits.data() + digits.size(), number, isHex ? 16 : 10 );
   if ( failure != std::errc() || end != digits.data() + digits.size() )
      return {};
   if ( number < argument.minimum || number > argument.maximum )
      return {};
   return number;
}

std::string invalid( std::string_view word, const Argument &argument ) {
   if ( argument.names.empty() )
      return fmt::format( "\"{}\" is not a valid {} ({} to {})", word, argument.name,
                          argument.minimum, argument.maximum );
   return fmt::format( "\"{}\" is not one of: {}", word, fmt::join( argument.names, ", " ) );
}

// `words` are the words after the verb.
std::variant<Action, std::string> parse( const Verb &verb, std::span<const std::string> words ) {
   std::vector<Argument> arguments;
   std::copy_if( verb.arguments.begin(), verb.arguments.end(), std::back_inserter( arguments ),
                 isUsed );
   if ( verb.bytesFollow && words.size() > arguments.size() )
      arguments.resize( std::min( words.size(), arguments.size() + longestBlock ), byteArgument );
   if ( words.size() != arguments.size() )
      return fmt::format( "usage: {}", usage( verb ) );
   Action action{ .operation = std::string( verb.operation ) };
   for ( size_t i = 0; i < words.size(); ++i ) {
      const auto value = valueOf( words[i], arguments[i] );
      if ( !value )
         return invalid( words[i], arguments[i] );
      action.arguments.push_back( *value );
   }
   return action;
}

} // namespace

std::variant<Action, std::string> parseAction( BoardFiles::Kind kind, const Words &words ) {
   for ( const Verb &verb : verbs ) {
      if ( verb.kind != kind )
         continue;
      const size_t own = verb.word.empty() ? 0 : 1;
      if ( own == 0 || ( !words.empty() && words[0] == verb.word ) )
         return parse( verb, std::span( words ).subspan( own ) );
   }
   const auto usages = usageOf( kind );
   if ( usages.empty() )
      return fmt::format( "there are no commands for a {}", nameOf( kind ) );
   return fmt::format( "usage, one of: {}", fmt::join( usages, "; " ) );
}

std::vector<std::string> usageOf( BoardFiles::Kind kind ) {
   std::vector<std::string> usages;
   for ( const Verb &verb : verbs )
      if ( verb.kind == kind )
         usages.push_back( usage( verb ) );
   return usages;
}

std::string_view nameOfSetting( int64_t setting ) {
   return settings.at( static_cast<size_t>( setting ) );
}

} // namespace Host
