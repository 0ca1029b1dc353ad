#include "screen/Width.h"

#include <algorithm>
#include <array>

namespace Screen {
namespace {

struct Range {
   char32_t first;
   char32_t last;
};

// East Asian wide and full-width characters, and pictures (Unicode, EastAsianWidth.txt).
constexpr std::array wide{ Range{ 0x1100, 0x115F },   Range{ 0x2E80, 0x303E },
                           Range{ 0x3041, 0xA4CF },   Range{ 0xAC00, 0xD7A3 },
                           Range{ 0xF900, 0xFAFF },   Range{ 0xFE30, 0xFE6F },
                           Range{ 0xFF00, 0xFF60 },   Range{ 0xFFE0, 0xFFE6 },
                           Range{ 0x1F300, 0x1F64F }, Range{ 0x1F900, 0x1F9FF },
                           Range{ 0x20000, 0x3FFFD } };
// They stand above the character before them, or nowhere.
constexpr std::array without{ Range{ 0x0300, 0x036F }, Range{ 0x200B, 0x200F },
                              Range{ 0xFE00, 0xFE0F } };

template <class Ranges>
bool isIn( const Ranges &ranges, char32_t code ) {
   return std::any_of( ranges.begin(), ranges.end(), [code]( const Range &range ) {
      return code >= range.first && code <= range.last;
   } );
}

// The bytes of a character by its first one; 1 for what can't be a first one.
size_t lengthBy( unsigned char first ) {
   return first >= 0xF0 && first < 0xF8 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 1;
}

} // namespace

Character firstOf( std::string_view text ) {
   const auto byte = [text]( size_t i ) { return static_cast<unsigned char>( text[i] ); };
   const size_t length = lengthBy( byte( 0 ) );
   Character one{ .code = byte( 0 ) };
   if ( length == 1 || length > text.size() )
      return one;
   char32_t code = byte( 0 ) & ( 0x7Fu >> length );
   for ( size_t i = 1; i < length; ++i ) {
      if ( ( byte( i ) & 0xC0 ) != 0x80 )
         return one;
      code = code << 6 | ( byte( i ) & 0x3F );
   }
   return { length, isIn( without, code ) ? 0u : isIn( wide, code ) ? 2u : 1u, code };
}

size_t widthOf( std::string_view text ) {
   size_t width = 0;
   for ( size_t i = 0; i < text.size(); ) {
      const Character one = firstOf( text.substr( i ) );
      width += one.columns;
      i += one.bytes;
   }
   return width;
}

size_t bytesWithin( std::string_view text, size_t columns ) {
   size_t end = 0;
   for ( size_t width = 0; end < text.size(); ) {
      const Character one = firstOf( text.substr( end ) );
      width += one.columns;
      if ( width > columns )
         break;
      end += one.bytes;
   }
   return end;
}

std::string clip( const std::string &text, size_t columns ) {
   return text.substr( 0, bytesWithin( text, columns ) );
}

std::string shorten( const std::string &text, size_t columns ) {
   if ( columns == 0 || widthOf( text ) <= columns )
      return clip( text, columns );
   return clip( text, columns - 1 ) + "…";
}

std::string fill( const std::string &text, size_t columns ) {
   std::string filled = shorten( text, columns );
   filled.append( columns - widthOf( filled ), ' ' );
   return filled;
}

} // namespace Screen
