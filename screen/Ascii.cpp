#include "screen/Ascii.h"

#include "screen/Width.h"

#include <string_view>

namespace Screen {
namespace {

char letterFor( char32_t code ) {
   constexpr std::u32string_view from = U"°…▸▾▁▂▃▄▅▆▇█µ";
   constexpr std::string_view to = "o>+-__..--^^u";
   static_assert( from.size() == to.size() );
   const size_t at = from.find( code );
   return at == from.npos ? '?' : to[at];
}

} // namespace

std::string toAscii( const std::string &text ) {
   std::string ascii;
   for ( size_t i = 0; i < text.size(); ) {
      const Character one = firstOf( std::string_view( text ).substr( i ) );
      ascii += one.code < 0x80 ? std::string( 1, static_cast<char>( one.code ) )
                               : std::string( one.columns, letterFor( one.code ) );
      i += one.bytes;
   }
   return ascii;
}

} // namespace Screen
