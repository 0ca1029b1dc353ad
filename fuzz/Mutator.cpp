#include "fuzz/Mutator.h"

#include <string_view>

namespace Fuzz {

std::string Mutator::next() {
   std::string input = seeds_[below( seeds_.size() )];
   for ( size_t changes = 1 + below( 4 ); changes > 0; --changes )
      change( input );
   return input;
}

std::string_view Mutator::partOf( std::string_view text ) {
   const size_t begin = below( text.size() );
   return text.substr( begin, 1 + below( 24 ) );
}

void Mutator::change( std::string &input ) {
   static const char *const numbers[] = { "0",   "-1",         "1",          "127",
                                          "255", "2147483648", "4294967295", "1e400" };
   const size_t at = below( input.size() );
   switch ( below( 7 ) ) {
   case 0: // a bit
      if ( !input.empty() )
         input[at] = static_cast<char>( input[at] ^ ( 1 << below( 8 ) ) );
      return;
   case 1: // a byte
      if ( !input.empty() )
         input[at] = static_cast<char>( below( 256 ) );
      return;
   case 2:
      input.insert( at, 1, static_cast<char>( below( 256 ) ) );
      return;
   case 3:
      input.erase( at, 1 + below( 24 ) );
      return;
   case 4:
      input.insert( at, std::string( partOf( input ) ) );
      return;
   case 5:
      input.insert( at, partOf( seeds_[below( seeds_.size() )] ) );
      return;
   default: // a number in a text
      const size_t digit = input.find_first_of( "0123456789", at );
      if ( digit != input.npos )
         input.replace( digit, input.find_first_not_of( "0123456789", digit ) - digit,
                        numbers[below( std::size( numbers ) )] );
   }
}

} // namespace Fuzz
