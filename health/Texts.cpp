#include "health/Texts.h"

#include <fmt/format.h>

#include <cmath>

namespace Health {

std::string durationText( double seconds ) {
   const auto whole = static_cast<long long>( std::floor( seconds ) );
   const long long minutes = whole / 60, hours = minutes / 60, days = hours / 24;
   if ( minutes == 0 )
      return fmt::format( "{} s", whole );
   if ( hours == 0 )
      return fmt::format( "{} min {} s", minutes, whole % 60 );
   if ( days == 0 )
      return fmt::format( "{} h {} min", hours, minutes % 60 );
   return fmt::format( "{} d {} h", days, hours % 24 );
}

std::string numberText( double number ) {
   return std::abs( number ) < 1000 ? fmt::format( "{:.4g}", number )
                                    : fmt::format( "{:.0f}", number );
}

std::string quantityText( double number, const std::string &unit ) {
   std::string text = numberText( number ) + " " + unit;
   if ( unit != "mW" )
      return text;
   return number > 0 ? fmt::format( "{} ({:.3g} dBm)", text, 10 * std::log10( number ) )
                     : text + " (no light)";
}

} // namespace Health
