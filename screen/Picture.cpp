#include "screen/Picture.h"

#include "screen/Width.h"

namespace Screen {

size_t widthOf( const Line &line ) {
   size_t width = 0;
   for ( const Span &span : line )
      width += widthOf( span.text );
   return width;
}

Line clip( const Line &line, size_t columns ) {
   Line clipped;
   for ( const Span &span : line ) {
      clipped.push_back( { clip( span.text, columns ), span.style, span.isSelected } );
      if ( widthOf( span.text ) >= columns )
         break;
      columns -= widthOf( span.text );
   }
   return clipped;
}

Line fill( const Line &line, size_t columns ) {
   Line filled = clip( line, columns );
   if ( const size_t width = widthOf( filled ); width < columns ) {
      if ( filled.empty() )
         filled.emplace_back();
      filled.back().text.append( columns - width, ' ' );
   }
   return filled;
}

std::string toText( const Line &line ) {
   std::string text;
   for ( const Span &span : line )
      text += span.text;
   return text.erase( text.find_last_not_of( ' ' ) + 1 );
}

std::string toText( const Picture &picture ) {
   std::string text;
   for ( const Line &line : picture )
      text += toText( line ) + "\n";
   return text;
}

std::vector<Line> linesOf( const std::vector<std::string> &texts, Style style ) {
   std::vector<Line> lines;
   for ( const std::string &text : texts )
      lines.push_back( { { text, style } } );
   return lines;
}

} // namespace Screen
