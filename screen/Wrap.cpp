#include "screen/Wrap.h"

#include "screen/Width.h"

namespace Screen {

void wrap( std::vector<std::string> &lines, std::string text, size_t indent, size_t columns ) {
   while ( columns > indent + 1 && widthOf( text ) > columns ) {
      const size_t end = bytesWithin( text, columns );
      const size_t blank = text.rfind( ' ', end );
      const bool isInAWord = blank == std::string::npos || blank <= indent;
      lines.push_back( text.substr( 0, isInAWord ? end : blank ) );
      text = std::string( indent, ' ' ) + text.substr( isInAWord ? end : blank + 1 );
   }
   lines.push_back( text );
}

} // namespace Screen
