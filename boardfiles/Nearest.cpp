#include "boardfiles/Nearest.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

namespace BoardFiles {
namespace {

// How many letters have to be put in, taken out or changed to make one word the other, upper and
// lower case being the same (Levenshtein's distance).
size_t distance( std::string_view one, std::string_view other ) {
   const auto lower = []( char letter ) { return std::tolower( static_cast<uint8_t>( letter ) ); };
   std::vector<size_t> row( other.size() + 1 );
   for ( size_t i = 0; i < row.size(); ++i )
      row[i] = i;
   for ( size_t i = 0; i < one.size(); ++i ) {
      size_t diagonal = row[0]++;
      for ( size_t j = 0; j < other.size(); ++j ) {
         const size_t changed = diagonal + ( lower( one[i] ) != lower( other[j] ) );
         diagonal = row[j + 1];
         row[j + 1] = std::min( { changed, row[j] + 1, row[j + 1] + 1 } );
      }
   }
   return row.back();
}

} // namespace

std::string didYouMean( std::string_view word, const std::vector<std::string> &names ) {
   const std::string *nearest = nullptr;
   size_t least = word.size() / 3 + 1; // further away it is another word
   for ( const std::string &name : names ) {
      const size_t letters = distance( word, name );
      if ( letters < least || ( letters == least && !nearest ) ) {
         nearest = &name;
         least = letters;
      }
   }
   return nearest ? fmt::format( " (did you mean \"{}\"?)", *nearest ) : "";
}

} // namespace BoardFiles
