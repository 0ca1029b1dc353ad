#include "host/terminal/Columns.h"

#include "host/terminal/CageGrid.h"

#include <algorithm>

namespace Host {

std::string orDash( std::string text ) { return text.empty() ? "-" : text; }

std::vector<std::string> inColumns( const Rows &rows ) {
   std::vector<size_t> widths( rows.empty() ? 0 : rows.front().size() );
   for ( const auto &row : rows )
      for ( size_t i = 0; i < row.size(); ++i )
         widths[i] = std::max( widths[i], widthOf( row[i] ) );
   std::vector<std::string> lines;
   for ( const auto &row : rows ) {
      std::string line;
      for ( size_t i = 0; i + 1 < row.size(); ++i )
         line += row[i] + std::string( widths[i] - widthOf( row[i] ) + 2, ' ' );
      lines.push_back( line + row.back() );
   }
   return lines;
}

} // namespace Host
