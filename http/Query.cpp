#include "http/Query.h"

#include <charconv>
#include <fmt/format.h>

namespace Http {
namespace {

bool isPlain( char c ) {
   return ( c >= '0' && c <= '9' ) || ( c >= 'A' && c <= 'Z' ) || ( c >= 'a' && c <= 'z' ) ||
          c == '-' || c == '.' || c == '_' || c == '~';
}

enum class Plus { IsItself, IsSpace }; // the latter only in a query

std::optional<std::string> decoded( std::string_view text, Plus plus ) {
   std::string plain;
   for ( size_t i = 0; i < text.size(); ++i ) {
      if ( text[i] != '%' ) {
         plain += text[i] == '+' && plus == Plus::IsSpace ? ' ' : text[i];
         continue;
      }
      const std::string_view digits = text.substr( i + 1, 2 );
      unsigned char byte = 0;
      const auto [end, error] =
         std::from_chars( digits.data(), digits.data() + digits.size(), byte, 16 );
      if ( digits.size() != 2 || error != std::errc() || end != digits.data() + 2 )
         return {};
      plain += static_cast<char>( byte );
      i += 2;
   }
   return plain;
}

} // namespace

std::optional<std::map<std::string, std::string>> parseQuery( std::string_view query ) {
   std::map<std::string, std::string> values;
   while ( !query.empty() ) {
      const std::string_view part = query.substr( 0, query.find( '&' ) );
      query.remove_prefix( std::min( part.size() + 1, query.size() ) );
      if ( part.empty() )
         continue;
      const size_t equals = std::min( part.find( '=' ), part.size() );
      const auto name = decoded( part.substr( 0, equals ), Plus::IsSpace );
      const auto value =
         decoded( part.substr( std::min( equals + 1, part.size() ) ), Plus::IsSpace );
      if ( !name || !value )
         return {};
      values.insert_or_assign( *name, *value );
   }
   return values;
}

std::optional<uint64_t> wholeNumber( std::string_view text ) {
   uint64_t number = 0;
   const char *end = text.data() + text.size();
   const auto result = std::from_chars( text.data(), end, number );
   if ( text.empty() || result.ec != std::errc() || result.ptr != end )
      return {};
   return number;
}

std::optional<std::string> parsePath( std::string_view path ) {
   return decoded( path, Plus::IsItself );
}

std::string urlEncoded( std::string_view text ) {
   std::string encoded;
   for ( const char c : text )
      encoded += isPlain( c ) ? std::string( 1, c )
                              : fmt::format( "%{:02X}", static_cast<unsigned char>( c ) );
   return encoded;
}

} // namespace Http
