#include "boardfiles/Pattern.h"

#include <regex.h>

#include <stdexcept>

namespace BoardFiles {

bool matches( std::string_view text, const std::string &pattern ) {
   regex_t compiled;
   if ( regcomp( &compiled, pattern.c_str(), REG_EXTENDED | REG_NOSUB ) != 0 )
      throw std::logic_error( "not a regular expression: " + pattern );
   const bool found = regexec( &compiled, std::string( text ).c_str(), 0, nullptr, 0 ) == 0;
   regfree( &compiled );
   return found;
}

bool matchesWhole( std::string_view text, const std::string &pattern ) {
   return matches( text, "^(" + pattern + ")$" );
}

} // namespace BoardFiles
