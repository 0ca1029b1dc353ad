#include "screen/Columns.h"

#include "screen/Width.h"
#include "screen/Wrap.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <numeric>

namespace Screen {
namespace {

constexpr size_t gap = 2;
constexpr size_t leastOfWrapped = 12, leastOfOthers = 4;

using Widths = std::vector<size_t>;

Widths widthsOf( const Rows &rows ) {
   Widths widths( rows.empty() ? 0 : rows.front().size() );
   for ( const auto &row : rows )
      for ( size_t i = 0; i < row.size(); ++i )
         widths[i] = std::max( widths[i], widthOf( row[i] ) );
   return widths;
}

size_t lineWidth( const Widths &widths ) {
   return std::accumulate( widths.begin(), widths.end(), gap * ( widths.size() - 1 ) );
}

std::string trimmed( std::string line ) {
   line.erase( line.find_last_not_of( ' ' ) + 1 );
   return line;
}

// A row, whose wrapped cell may go on in the lines below it.
void addRow( std::vector<std::string> &lines, const std::vector<std::string> &row,
             const Widths &widths, std::optional<size_t> wrapped ) {
   std::vector<std::string> parts{ "" };
   if ( wrapped ) {
      parts.clear();
      wrap( parts, row[*wrapped], 0, widths[*wrapped] );
   }
   for ( size_t n = 0; n < parts.size(); ++n ) {
      std::string line;
      for ( size_t i = 0; i < row.size(); ++i ) {
         const std::string &cell = wrapped == i ? parts[n] : row[i];
         line += fill( n == 0 || wrapped == i ? cell : "", widths[i] ) + std::string( gap, ' ' );
      }
      lines.push_back( trimmed( line ) );
   }
}

// The wrapped column first, then the widest of the others, until the lines fit.
void narrow( Widths &widths, size_t columns, std::optional<size_t> wrapped ) {
   if ( wrapped && lineWidth( widths ) > columns ) {
      const size_t over = lineWidth( widths ) - columns;
      widths[*wrapped] =
         std::max( leastOfWrapped, widths[*wrapped] - std::min( over, widths[*wrapped] ) );
   }
   while ( lineWidth( widths ) > columns ) {
      const auto widest = std::max_element( widths.begin(), widths.end() );
      if ( *widest <= leastOfOthers )
         return;
      --*widest;
   }
}

void leaveOut( Rows &rows, size_t column ) {
   for ( auto &row : rows )
      row.erase( row.begin() + static_cast<std::ptrdiff_t>( column ) );
}

} // namespace

std::string orDash( std::string text ) { return text.empty() ? "-" : text; }

std::vector<std::string> inColumns( const Rows &all, size_t columns, const Narrowing &narrowing ) {
   Rows rows = all;
   Widths widths = widthsOf( rows );
   std::vector<std::string> lines;
   if ( rows.empty() || columns == 0 || lineWidth( widths ) <= columns ) {
      for ( const auto &row : rows )
         addRow( lines, row, widths, {} );
      return lines;
   }
   if ( narrowing.hasNotes )
      leaveOut( rows, rows.front().size() - 1 );
   std::vector<std::string> without;
   std::optional<size_t> wrapped = narrowing.wrapped;
   for ( const size_t column : narrowing.dispensable ) {
      if ( lineWidth( widthsOf( rows ) ) <= columns )
         break;
      // Those that went before it have moved it to the left.
      const auto moved = std::find( rows.front().begin(), rows.front().end(), all.front()[column] );
      const auto at = static_cast<size_t>( moved - rows.front().begin() );
      without.push_back( *moved );
      leaveOut( rows, at );
      if ( wrapped && *wrapped > at )
         --*wrapped;
   }
   widths = widthsOf( rows );
   narrow( widths, columns, wrapped );
   for ( size_t i = 0; i < rows.size(); ++i ) {
      addRow( lines, rows[i], widths, wrapped );
      if ( narrowing.hasNotes && i > 0 && all[i].back() != "-" )
         wrap( lines, "  " + all[i].back(), 2, columns );
   }
   if ( !without.empty() )
      wrap( lines,
            fmt::format( "({}: no room in {} columns)", fmt::join( without, ", " ), columns ), 1,
            columns );
   return lines;
}

} // namespace Screen
