#include "host/terminal/CageGrid.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <map>

namespace Host {
namespace {

constexpr size_t gridWidth = 80;

constexpr auto legend =
   "CAGES  # present, . empty, ? unreadable, ~ stale; F tx fault, L rx loss, D tx "
   "disable; P low power, R reset, I interrupt";

struct Line {
   std::string_view name;
   char letter;
};
constexpr std::array controlLines{ Line{ "tx_fault", 'F' },   Line{ "rx_los", 'L' },
                                   Line{ "tx_disable", 'D' }, Line{ "lp_mode", 'P' },
                                   Line{ "reset", 'R' },      Line{ "interrupt", 'I' } };

bool isReadable( const Reading &reading ) {
   return reading.state != State::Unreadable && reading.state != State::Unsupported;
}

char markOfPresence( const Reading &presence ) {
   if ( !isReadable( presence ) )
      return '?';
   return presence.value == Scalar( true ) ? '#' : '.';
}

char markOfLine( const Reading &reading, char letter ) {
   if ( !isReadable( reading ) )
      return '?';
   return reading.value == Scalar( int64_t{ 0 } ) ? '-' : letter;
}

std::string cellOf( const ObjectReport &cage ) {
   std::string marks = "?", states;
   for ( const ValueReport &value : cage.values ) {
      const Reading &reading = value.reading;
      if ( reading.name == "presence" ) {
         marks.front() = markOfPresence( reading );
         if ( reading.state == State::Stale )
            states = "~";
      }
      for ( const Line &line : controlLines )
         if ( reading.name == line.name && reading.state != State::Unsupported )
            marks += markOfLine( reading, line.letter );
   }
   return cage.name + " " + marks + states;
}

// The first fault of a cage, or an empty text.
std::string faultOf( const ObjectReport &cage ) {
   if ( std::string fault = toText( cage.fault ); !fault.empty() )
      return fault;
   for ( const ValueReport &value : cage.values )
      if ( value.reading.state != State::Unsupported && value.reading.fault != Fault() )
         return toText( value.reading.fault );
   return {};
}

} // namespace

size_t widthOf( const std::string &text ) {
   return static_cast<size_t>( std::count_if(
      text.begin(), text.end(), []( char byte ) { return ( byte & 0xC0 ) != 0x80; } ) );
}

bool isCage( const ObjectReport &object ) { return object.type == "xcvr"; }

std::vector<std::string> gridOf( const BoardReport &board ) {
   std::vector<std::string> cells;
   std::map<std::string, std::vector<std::string>> faults;
   for ( const ObjectReport &object : board ) {
      if ( !isCage( object ) )
         continue;
      cells.push_back( cellOf( object ) );
      if ( const std::string fault = faultOf( object ); !fault.empty() )
         faults[fault].push_back( object.name );
   }
   if ( cells.empty() )
      return {};
   size_t width = 0;
   for ( const std::string &cell : cells )
      width = std::max( width, widthOf( cell ) + 2 );
   const size_t perRow = std::max<size_t>( 1, gridWidth / width );
   std::vector<std::string> grid{ legend };
   for ( size_t i = 0; i < cells.size(); ++i ) {
      if ( i % perRow == 0 )
         grid.emplace_back();
      const bool isLast = i % perRow == perRow - 1 || i + 1 == cells.size();
      grid.back() += cells[i];
      if ( !isLast )
         grid.back() += std::string( width - widthOf( cells[i] ), ' ' );
   }
   for ( const auto &[fault, names] : faults )
      grid.push_back( names.size() == 1 ? fmt::format( "{}: {}", names.front(), fault )
                                        : fmt::format( "{} and {} more: {}", names.front(),
                                                       names.size() - 1, fault ) );
   return grid;
}

} // namespace Host
