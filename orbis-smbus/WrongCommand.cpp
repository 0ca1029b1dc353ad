#include "orbis-smbus/WrongCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <utility>

namespace SmbusClient {

namespace {

// How many letters have to be inserted, removed or replaced to make one word of the other.
size_t editDistance( const std::string &from, const std::string &to ) {
   std::vector<size_t> row( to.size() + 1 );
   std::iota( row.begin(), row.end(), size_t( 0 ) );
   for ( size_t i = 0; i < from.size(); ++i ) {
      size_t diagonal = std::exchange( row[0], i + 1 );
      for ( size_t j = 0; j < to.size(); ++j ) {
         const size_t replaced = diagonal + ( from[i] != to[j] );
         diagonal = row[j + 1];
         row[j + 1] = std::min( { replaced, row[j] + 1, diagonal + 1 } );
      }
   }
   return row.back();
}

} // namespace

std::string unknownCommand( const std::string &word, const std::vector<std::string> &known ) {
   const std::string nearest =
      *std::min_element( known.begin(), known.end(), [&]( const auto &left, const auto &right ) {
         return editDistance( word, left ) < editDistance( word, right );
      } );
   const bool similar = editDistance( word, nearest ) <= 2;
   return fmt::format( "{} is not a command{}. Commands: {}", word,
                       similar ? fmt::format( " (did you mean {}?)", nearest ) : "",
                       fmt::join( known, ", " ) );
}

} // namespace SmbusClient
