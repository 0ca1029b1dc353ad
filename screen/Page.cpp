#include "screen/Page.h"

#include "screen/Width.h"

#include <algorithm>
#include <fmt/format.h>

namespace Screen {
namespace {

size_t lastTop( const Page &page, size_t rows ) {
   return page.lines.size() > rows ? page.lines.size() - rows : 0;
}

// The line with the columns of the target marked.
Line marked( const Line &line, const Target &target, size_t columns ) {
   const size_t end = target.width == 0 ? columns : target.column + target.width;
   Line result;
   size_t column = 0;
   for ( const Span &span : fill( line, columns ) ) {
      std::string rest = span.text;
      while ( !rest.empty() ) {
         const bool isIn = column >= target.column && column < end;
         const size_t until = column < target.column ? target.column : isIn ? end : columns;
         std::string part = clip( rest, until - column );
         if ( part.empty() )
            part = rest; // a wide character across the border
         column += widthOf( part );
         rest.erase( 0, part.size() );
         result.push_back( { std::move( part ), span.style, isIn } );
      }
   }
   return result;
}

} // namespace

const Target *Page::find( const std::string &id ) const {
   const auto found = std::find_if( targets.begin(), targets.end(),
                                    [&id]( const Target &one ) { return one.id == id; } );
   return found == targets.end() ? nullptr : &*found;
}

bool PageView::press( Key key, const Page &page, size_t rows ) {
   keepSelection( page );
   if ( page.targets.empty() )
      return scroll( key, page, rows );
   const size_t at = static_cast<size_t>( page.find( selected_ ) - page.targets.data() );
   const size_t last = page.targets.size() - 1;
   const auto isBeside = [&]( size_t other ) {
      return other <= last && page.targets[other].line == page.targets[at].line;
   };
   // The window moves with the selection.
   const auto byPage = [&]( bool isDown ) {
      const size_t from = page.targets[at].line;
      const auto distance = [&]( size_t target ) {
         const size_t line = page.targets[target].line;
         return std::max( line, from ) - std::min( line, from );
      };
      size_t to = at;
      while ( ( isDown ? to < last : to > 0 ) && distance( to ) + 1 < rows )
         isDown ? ++to : --to;
      moveTo( page, to );
      top_ = isDown ? top_ + distance( to ) : top_ - std::min( top_, distance( to ) );
   };
   switch ( key ) {
   case Key::Up:
   case Key::Down:
      moveByLine( page, at, key == Key::Down );
      return true;
   case Key::Left:
   case Key::Right: {
      const size_t other = key == Key::Right ? at + 1 : at - 1;
      if ( ( key == Key::Left && at == 0 ) || !isBeside( other ) )
         return false;
      moveTo( page, other );
      return true;
   }
   case Key::Tab:
      for ( size_t i = 1; i <= page.targets.size(); ++i )
         if ( const size_t next = ( at + i ) % page.targets.size(); page.targets[next].isTitle ) {
            moveTo( page, next );
            break;
         }
      return true;
   case Key::PageUp:
   case Key::PageDown:
      byPage( key == Key::PageDown );
      return true;
   case Key::Home:
      top_ = 0;
      moveTo( page, 0 );
      return true;
   case Key::End:
      top_ = lastTop( page, rows );
      moveTo( page, last );
      return true;
   default:
      return false;
   }
}

bool PageView::scroll( Key key, const Page &page, size_t rows ) {
   const size_t last = lastTop( page, rows );
   const size_t step = rows > 1 ? rows - 1 : 1;
   switch ( key ) {
   case Key::Up:
      top_ -= std::min<size_t>( top_, 1 );
      return true;
   case Key::Down:
      top_ = std::min( top_ + 1, last );
      return true;
   case Key::PageUp:
      top_ -= std::min( top_, step );
      return true;
   case Key::PageDown:
      top_ = std::min( top_ + step, last );
      return true;
   case Key::Home:
      top_ = 0;
      return true;
   case Key::End:
      top_ = last;
      return true;
   default:
      return false;
   }
}

// What was selected may be gone: then what is now in its place.
void PageView::keepSelection( const Page &page ) {
   if ( page.targets.empty() )
      selected_.clear();
   else if ( const Target *known = page.find( selected_ ) )
      last_ = static_cast<size_t>( known - page.targets.data() );
   else
      moveTo( page, std::min( last_, page.targets.size() - 1 ) );
}

void PageView::moveTo( const Page &page, size_t target ) {
   last_ = target;
   selected_ = page.targets[target].id;
}

// To the nearest target on the next line that has any.
void PageView::moveByLine( const Page &page, size_t from, bool isDown ) {
   const Target &start = page.targets[from];
   size_t best = from;
   for ( size_t i = from; isDown ? i + 1 < page.targets.size() : i > 0; ) {
      isDown ? ++i : --i;
      const Target &one = page.targets[i];
      if ( one.line == start.line )
         continue;
      if ( best != from && one.line != page.targets[best].line )
         break;
      const auto distance = [&start]( const Target &other ) {
         return std::max( other.column, start.column ) - std::min( other.column, start.column );
      };
      if ( best == from || distance( one ) < distance( page.targets[best] ) )
         best = i;
   }
   moveTo( page, best );
}

void PageView::keepInSight( const Page &page, size_t rows ) {
   keepSelection( page );
   top_ = std::min( top_, lastTop( page, rows ) );
   const Target *target = page.find( selected_ );
   if ( !target )
      return;
   // What stands above the first target is seen with it.
   const size_t first = target == page.targets.data() ? 0 : target->line;
   if ( const size_t end = target->line + target->lines; end > top_ + rows )
      top_ = end - rows;
   if ( first < top_ || target->line < top_ )
      top_ = std::min( first + rows > target->line ? first : target->line, target->line );
}

Picture PageView::draw( const Page &page, size_t columns, size_t rows ) {
   keepInSight( page, rows );
   const Target *target = page.find( selected_ );
   Picture picture;
   for ( size_t i = top_; i < top_ + rows; ++i ) {
      const Line line = i < page.lines.size() ? page.lines[i] : Line{};
      picture.push_back( target && i == target->line ? marked( line, *target, columns )
                                                     : clip( line, columns ) );
   }
   return picture;
}

std::string PageView::position( const Page &page, size_t rows ) const {
   if ( page.lines.size() <= rows )
      return {};
   return fmt::format( "{}-{} of {}", top_ + 1, std::min( top_ + rows, page.lines.size() ),
                       page.lines.size() );
}

} // namespace Screen
