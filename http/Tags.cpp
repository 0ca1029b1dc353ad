#include "http/Tags.h"

#include <algorithm>

namespace Http {

bool hasTag( std::string_view ifNoneMatch, std::string_view tag ) {
   constexpr std::string_view blanks = " \t";
   while ( !ifNoneMatch.empty() ) {
      std::string_view one = ifNoneMatch.substr( 0, ifNoneMatch.find( ',' ) );
      ifNoneMatch.remove_prefix( std::min( one.size() + 1, ifNoneMatch.size() ) );
      one.remove_prefix( std::min( one.find_first_not_of( blanks ), one.size() ) );
      one = one.substr( 0, one.find_last_not_of( blanks ) + 1 );
      if ( one.starts_with( "W/" ) ) // a proxy has changed how it is sent, not what
         one.remove_prefix( 2 );
      if ( one == "*" || one == tag )
         return true;
   }
   return false;
}

} // namespace Http
