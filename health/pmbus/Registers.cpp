#include "health/pmbus/Registers.h"

#include "health/pmbus/Bits.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <optional>

namespace Health::Pmbus {

namespace {

std::optional<uint16_t> numberIn( std::string_view text ) {
   if ( !text.starts_with( "0x" ) )
      return {};
   text.remove_prefix( 2 );
   uint16_t number = 0;
   const auto [end, failure] =
      std::from_chars( text.data(), text.data() + text.size(), number, 16 );
   const bool isAll = failure == std::errc() && end == text.data() + text.size();
   return isAll ? std::optional( number ) : std::nullopt;
}

} // namespace

std::vector<uint8_t> registersBehind( uint16_t statusWord ) {
   std::vector<uint8_t> behind;
   for ( const SummaryBit &bit : summaryBits() )
      if ( ( statusWord & bit.mask ) && bit.detail &&
           std::find( behind.begin(), behind.end(), bit.detail ) == behind.end() )
         behind.push_back( bit.detail );
   return behind;
}

std::string toText( const Registers &registers ) {
   std::string text;
   for ( const auto &[command, value] : registers )
      text += command == StatusWord ? fmt::format( " {:#04x}={:#06x}", command, value )
                                    : fmt::format( " {:#04x}={:#04x}", command, value );
   return text.empty() ? text : text.substr( 1 );
}

Registers registersIn( std::string_view text ) {
   Registers registers;
   while ( !text.empty() ) {
      const std::string_view one = text.substr( 0, text.find( ' ' ) );
      text.remove_prefix( std::min( one.size() + 1, text.size() ) );
      const size_t equals = one.find( '=' );
      if ( equals == std::string_view::npos )
         continue;
      const auto command = numberIn( one.substr( 0, equals ) );
      const auto value = numberIn( one.substr( equals + 1 ) );
      if ( command && *command <= 0xFF && value )
         registers[static_cast<uint8_t>( *command )] = *value;
   }
   return registers;
}

} // namespace Health::Pmbus
