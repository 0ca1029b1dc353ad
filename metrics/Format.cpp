#include "metrics/Format.h"

#include <algorithm>
#include <charconv>

namespace Metrics {
namespace {

std::string_view trimmed( std::string_view text ) {
   constexpr std::string_view blanks = " \t\"";
   const size_t begin = std::min( text.find_first_not_of( blanks ), text.size() );
   return text.substr( begin, text.find_last_not_of( blanks ) + 1 - begin );
}

// The part in front of the separator, which is taken off with it.
std::string_view takeUpTo( char separator, std::string_view &text ) {
   const size_t end = std::min( text.find( separator ), text.size() );
   const std::string_view part = text.substr( 0, end );
   text.remove_prefix( std::min( end + 1, text.size() ) );
   return trimmed( part );
}

// What a client thinks of one media type: "application/openmetrics-text; version=1.0.0; q=0.5".
struct Wish {
   explicit Wish( std::string_view text ) : type( takeUpTo( ';', text ) ) {
      while ( !text.empty() ) {
         std::string_view value = takeUpTo( ';', text );
         const std::string_view name = takeUpTo( '=', value );
         if ( name == "version" )
            version = trimmed( value );
         else if ( name == "q" )
            std::from_chars( value.data(), value.data() + value.size(), weight );
      }
   }
   // How much it wants this one.
   double of( std::string_view wanted, std::string_view ofVersion ) const {
      return type == wanted && ( version.empty() || version == ofVersion ) ? weight : 0;
   }

   std::string_view type;
   std::string_view version{};
   double weight = 1;
};

} // namespace

std::string_view contentTypeOf( Format format ) {
   return format == Format::OpenMetrics
             ? "application/openmetrics-text; version=1.0.0; charset=utf-8"
             : "text/plain; version=0.0.4; charset=utf-8";
}

Format preferredBy( std::string_view accept ) {
   double text = 0, openMetrics = 0;
   while ( !accept.empty() ) {
      const Wish wish( takeUpTo( ',', accept ) );
      text = std::max( text, wish.of( "text/plain", "0.0.4" ) );
      openMetrics = std::max( openMetrics, wish.of( "application/openmetrics-text", "1.0.0" ) );
   }
   return openMetrics > 0 && openMetrics >= text ? Format::OpenMetrics : Format::Text;
}

} // namespace Metrics
