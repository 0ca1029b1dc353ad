#include "smbus/SegmentPath.h"

#include "smbus/RootBusId.h"

#include <fmt/format.h>

#include <algorithm>

namespace Bus {

std::string toText( const SegmentPath &path ) {
   std::string text;
   for ( const Selection &one : path )
      text += fmt::format( "{}{:#04x}={}", text.empty() ? "" : " ", one.mux, one.select );
   return text;
}

std::optional<Selection> parseSelection( std::string_view text ) {
   const size_t equals = text.find( '=' );
   if ( equals == text.npos )
      return {};
   const auto mux = parseNumber( text.substr( 0, equals ), maxAddress );
   const auto select = parseNumber( text.substr( equals + 1 ), 0xFF );
   if ( !mux || !select )
      return {};
   return Selection{ static_cast<uint8_t>( *mux ), static_cast<uint8_t>( *select ) };
}

std::optional<SegmentPath> parseSegmentPath( std::string_view text ) {
   SegmentPath path;
   while ( !text.empty() ) {
      const size_t space = std::min( text.find( ' ' ), text.size() );
      const auto one = parseSelection( text.substr( 0, space ) );
      if ( !one )
         return {};
      path.push_back( *one );
      text.remove_prefix( std::min( space + 1, text.size() ) );
   }
   return path;
}

} // namespace Bus
