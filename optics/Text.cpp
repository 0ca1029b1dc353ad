#include "optics/Text.h"

#include <algorithm>
#include <fmt/format.h>

namespace Optics {

namespace {

bool isPadding( uint8_t byte ) { return byte == ' ' || byte == 0; }
bool isPrintable( uint8_t byte ) { return byte >= 0x20 && byte <= 0x7E; }

// Two digits.
unsigned numberAt( const std::string &text, size_t place ) {
   return static_cast<unsigned>( ( text[place] - '0' ) * 10 + ( text[place + 1] - '0' ) );
}

unsigned daysOf( unsigned year, unsigned month ) {
   if ( month == 2 )
      return year % 4 == 0 ? 29 : 28; // 2000 to 2099
   return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

} // namespace

std::string escapedText( std::span<const uint8_t> bytes ) {
   while ( !bytes.empty() && isPadding( bytes.back() ) )
      bytes = bytes.first( bytes.size() - 1 );
   std::string text;
   for ( const uint8_t byte : bytes )
      text += isPrintable( byte ) ? std::string( 1, static_cast<char>( byte ) )
                                  : fmt::format( "\\x{:02x}", byte );
   return text;
}

std::string ouiText( std::span<const uint8_t> bytes ) {
   if ( std::all_of( bytes.begin(), bytes.end(), []( uint8_t byte ) { return byte == 0; } ) )
      return "";
   return fmt::format( "{:02x}", fmt::join( bytes.begin(), bytes.end(), ":" ) );
}

std::string dateOf( const std::string &dateCode ) {
   const auto isDigit = []( char letter ) { return letter >= '0' && letter <= '9'; };
   if ( dateCode.size() < 6 || !std::all_of( dateCode.begin(), dateCode.begin() + 6, isDigit ) )
      return "";
   const unsigned year = 2000 + numberAt( dateCode, 0 );
   const unsigned month = numberAt( dateCode, 2 );
   const unsigned day = numberAt( dateCode, 4 );
   if ( month < 1 || month > 12 || day < 1 || day > daysOf( year, month ) )
      return "";
   return fmt::format( "{}-{:02}-{:02}", year, month, day );
}

std::string lotOf( const std::string &dateCode ) {
   return dateOf( dateCode ).empty() ? "" : dateCode.substr( 6 );
}

} // namespace Optics
