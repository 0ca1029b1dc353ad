#include "host/terminal/Wrap.h"

namespace Host {

void wrap( std::vector<std::string> &lines, std::string text, size_t indent, size_t columns ) {
   while ( columns > 0 && text.size() > columns ) {
      const size_t blank = text.rfind( ' ', columns );
      if ( blank == std::string::npos || blank <= indent )
         break;
      lines.push_back( text.substr( 0, blank ) );
      text = std::string( indent, ' ' ) + text.substr( blank + 1 );
   }
   lines.push_back( text );
}

} // namespace Host
