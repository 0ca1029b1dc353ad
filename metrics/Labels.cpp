#include "metrics/Labels.h"

#include <algorithm>
#include <cstdint>

namespace Metrics {
namespace {

uint8_t byteAt( std::string_view text, size_t i ) { return static_cast<uint8_t>( text[i] ); }

// How many bytes the character at the begin of a text has; 0 where it is no UTF-8. Encodings longer
// than needed, surrogates and what is above U+10FFFF are none (Unicode, table 3-7).
size_t characterLength( std::string_view text ) {
   const uint8_t first = byteAt( text, 0 );
   const size_t length = first < 0x80   ? 1
                         : first < 0xC2 ? 0
                         : first < 0xE0 ? 2
                         : first < 0xF0 ? 3
                         : first < 0xF5 ? 4
                                        : 0;
   if ( length < 2 )
      return first == 0 ? 0 : length;
   if ( text.size() < length )
      return 0;
   const uint8_t lowest = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
   const uint8_t highest = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
   if ( byteAt( text, 1 ) < lowest || byteAt( text, 1 ) > highest )
      return 0;
   for ( size_t i = 2; i < length; ++i )
      if ( ( byteAt( text, i ) & 0xC0 ) != 0x80 )
         return 0;
   return length;
}

// Nearly all texts are of such alone. No function, so that the search is one loop.
constexpr auto isPlain = []( char c ) {
   return static_cast<signed char>( c ) > 0 && c != '\n' && c != '"' && c != '\\';
};

void appendEscaped( std::string &to, std::string_view value ) {
   constexpr std::string_view replacement = "\xEF\xBF\xBD";
   while ( !value.empty() ) {
      const auto special = std::find_if_not( value.begin(), value.end(), isPlain );
      to.append( value.begin(), special );
      value.remove_prefix( static_cast<size_t>( special - value.begin() ) );
      if ( value.empty() )
         return;
      const size_t length = characterLength( value );
      if ( value[0] == '\n' )
         to += "\\n";
      else if ( value[0] == '"' || value[0] == '\\' )
         ( to += '\\' ) += value[0];
      else
         to += length == 0 ? replacement : value.substr( 0, length );
      value.remove_prefix( length == 0 ? 1 : length );
   }
}

} // namespace

Labels &Labels::add( std::string_view name, std::string_view value ) {
   text_.reserve( text_.size() + name.size() + value.size() + 4 ); // a comma, =, and quotes
   if ( !text_.empty() )
      text_ += ',';
   text_.append( name ).append( "=\"" );
   appendEscaped( text_, value );
   text_ += '"';
   return *this;
}

} // namespace Metrics
