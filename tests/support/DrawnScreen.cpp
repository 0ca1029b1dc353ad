#include "DrawnScreen.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace TestSupport {

namespace {

std::vector<size_t> numbersIn( const std::string &parameters ) {
   std::vector<size_t> numbers;
   std::istringstream stream( parameters );
   for ( std::string one; std::getline( stream, one, ';' ); )
      numbers.push_back( one.empty() ? 0 : std::stoul( one ) );
   return numbers;
}

size_t lengthOf( unsigned char first ) {
   return first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 1;
}

} // namespace

DrawnScreen::DrawnScreen( size_t columns, size_t rows )
   : cells_( rows, Row( columns, " " ) ), others_( cells_ ), bottom_( rows - 1 ) {}

void DrawnScreen::resize( size_t columns, size_t rows ) {
   for ( auto *screen : { &cells_, &others_ } ) {
      for ( Row &row : *screen )
         row.resize( columns, " " );
      screen->resize( rows, Row( columns, " " ) );
   }
   top_ = 0, bottom_ = rows - 1;
   row_ = std::min( row_, rows - 1 );
   column_ = std::min( column_, columns - 1 );
}

std::string DrawnScreen::text() const {
   std::string text;
   for ( const Row &row : cells_ ) {
      std::string line;
      for ( const std::string &cell : row )
         line += cell;
      text += line.erase( line.find_last_not_of( ' ' ) + 1 ) + "\n";
   }
   return text;
}

size_t DrawnScreen::written() { return std::exchange( written_, 0 ); }

void DrawnScreen::feed( const std::string &bytes ) {
   const std::string all = std::exchange( rest_, {} ) + bytes;
   for ( size_t i = 0; i < all.size(); ) {
      const auto byte = static_cast<unsigned char>( all[i] );
      if ( byte == 0x1b ) {
         if ( i + 1 >= all.size() ) {
            rest_ = all.substr( i );
            return;
         }
         const char kind = all[i + 1];
         size_t end = i + 2;
         if ( kind == '[' ) {
            end =
               all.find_first_of( "@ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz`", i + 2 );
            if ( end == all.npos ) {
               rest_ = all.substr( i );
               return;
            }
            sequence( all.substr( i + 2, end - i - 2 ), all[end] );
            ++end;
         } else if ( kind == '(' || kind == ')' ) {
            if ( end >= all.size() ) {
               rest_ = all.substr( i );
               return;
            }
            ++end;
         } else if ( kind == 'M' ) {
            row_ == top_ ? scroll( 1, false ) : void( --row_ );
         }
         i = end;
      } else if ( byte < 0x20 ) {
         control( all[i++] );
      } else {
         const size_t length = lengthOf( byte );
         if ( i + length > all.size() ) {
            rest_ = all.substr( i );
            return;
         }
         put( all.substr( i, length ) );
         i += length;
      }
   }
}

void DrawnScreen::put( const std::string &character ) {
   if ( column_ == columns() ) { // the last column was written before
      control( '\n' );
      column_ = 0;
   }
   cells_[row_][column_++] = last_ = character;
   ++written_;
}

void DrawnScreen::control( char byte ) {
   if ( byte == '\r' )
      column_ = 0;
   else if ( byte == '\b' )
      column_ -= std::min<size_t>( column_, 1 );
   else if ( byte == '\t' )
      column_ = std::min( ( column_ / 8 + 1 ) * 8, columns() - 1 );
   else if ( byte == '\n' )
      row_ == bottom_ ? scroll( 1, true ) : void( row_ = std::min( row_ + 1, cells_.size() - 1 ) );
}

void DrawnScreen::erase( size_t row, size_t from, size_t to ) {
   for ( size_t i = from; i < std::min( to, columns() ); ++i )
      cells_[row][i] = " ";
}

void DrawnScreen::scroll( size_t lines, bool isUp ) {
   for ( ; lines > 0; --lines ) {
      const auto first = cells_.begin() + static_cast<std::ptrdiff_t>( isUp ? top_ : bottom_ );
      cells_.erase( first );
      cells_.insert( cells_.begin() + static_cast<std::ptrdiff_t>( isUp ? bottom_ : top_ ),
                     Row( cells_.front().size(), " " ) );
   }
}

void DrawnScreen::setMode( const std::string &parameters, bool isOn ) {
   for ( const size_t mode : numbersIn( parameters.substr( 1 ) ) ) {
      if ( mode == 1049 && isOn != isFullScreen_ ) {
         isFullScreen_ = isOn;
         cells_.swap( others_ );
         std::swap( row_, otherRow_ );
         std::swap( column_, otherColumn_ );
      }
      if ( mode == 25 )
         isCursorShown_ = isOn;
   }
}

void DrawnScreen::colour( const std::string &parameters ) {
   for ( const size_t number : numbersIn( parameters ) )
      isColoured_ |= number >= 30 && number < 38;
}

void DrawnScreen::sequence( const std::string &parameters, char end ) {
   if ( parameters.starts_with( '?' ) ) {
      if ( end == 'h' || end == 'l' )
         setMode( parameters, end == 'h' );
      return;
   }
   if ( end == 'm' )
      return colour( parameters );
   const std::vector<size_t> numbers = numbersIn( parameters );
   const auto number = [&numbers]( size_t i, size_t usual ) {
      return i < numbers.size() && numbers[i] > 0 ? numbers[i] : usual;
   };
   const size_t count = number( 0, 1 ), lastRow = cells_.size() - 1, lastColumn = columns() - 1;
   column_ = std::min( column_, end == 'b' ? columns() : lastColumn );
   Row &row = cells_[row_];
   const auto here = row.begin() + static_cast<std::ptrdiff_t>( std::min( column_, lastColumn ) );
   switch ( end ) {
   case 'H':
      row_ = std::min( number( 0, 1 ) - 1, lastRow );
      column_ = std::min( number( 1, 1 ) - 1, lastColumn );
      break;
   case 'A':
      row_ -= std::min( count, row_ );
      break;
   case 'B':
      row_ = std::min( row_ + count, lastRow );
      break;
   case 'C':
      column_ = std::min( column_ + count, lastColumn );
      break;
   case 'D':
      column_ -= std::min( count, column_ );
      break;
   case 'G':
      column_ = std::min( count - 1, lastColumn );
      break;
   case 'd':
      row_ = std::min( count - 1, lastRow );
      break;
   case 'J':
      erase( row_, column_, columns() );
      for ( size_t i = row_ + 1; i <= lastRow; ++i )
         erase( i, 0, columns() );
      break;
   case 'K':
      number( 0, 0 ) == 1 ? erase( row_, 0, column_ + 1 ) : erase( row_, column_, columns() );
      break;
   case 'X':
      erase( row_, column_, column_ + count );
      break;
   case 'b':
      for ( size_t i = 0; i < count; ++i )
         put( std::string( last_ ) );
      break;
   case 'P':
      row.erase( here,
                 here + static_cast<std::ptrdiff_t>( std::min( count, columns() - column_ ) ) );
      row.resize( lastColumn + 1, " " );
      break;
   case '@':
      row.insert( here, count, " " );
      row.resize( lastColumn + 1 );
      break;
   case 'L':
   case 'M': {
      const size_t top = std::exchange( top_, row_ );
      scroll( count, end == 'M' );
      top_ = top;
      break;
   }
   case 'S':
   case 'T':
      scroll( count, end == 'S' );
      break;
   case 'Z':
      column_ = column_ == 0 ? 0 : ( column_ - 1 ) / 8 * 8;
      break;
   case 'r':
      top_ = number( 0, 1 ) - 1;
      bottom_ = number( 1, cells_.size() ) - 1;
      row_ = column_ = 0;
      break;
   case 't': // the window's title
   case 'l':
   case 'h':
      break;
   default:
      throw std::runtime_error( "the terminal doesn't know \\e[" + parameters + end );
   }
}

} // namespace TestSupport
