#include "host/terminal/CageGrid.h"

#include "screen/Width.h"
#include "screen/Wrap.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <map>

namespace Host {
namespace {

constexpr size_t usualWidth = 80, gap = 2;

struct ControlLine {
   std::string_view name;
   char letter;
};
constexpr std::array controlLines{
   ControlLine{ "tx_fault", 'F' }, ControlLine{ "rx_los", 'L' }, ControlLine{ "tx_disable", 'D' },
   ControlLine{ "lp_mode", 'P' },  ControlLine{ "reset", 'R' },  ControlLine{ "interrupt", 'I' }
};

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

} // namespace

// Without a module its lines mean nothing: those of an SFP cage then read as a fault.
std::string marksOf( const ObjectReport &cage ) {
   std::string marks = "?", states;
   for ( const ValueReport &value : cage.values ) {
      const Reading &reading = value.reading;
      if ( reading.name == "presence" ) {
         marks.front() = markOfPresence( reading );
         if ( reading.state == State::Stale )
            states = "~";
      }
      for ( const ControlLine &line : controlLines )
         if ( marks.front() != '.' && reading.name == line.name &&
              reading.state != State::Unsupported )
            marks += markOfLine( reading, line.letter );
   }
   return marks + states;
}

std::string faultOf( const ObjectReport &cage ) {
   if ( std::string fault = toText( cage.fault ); !fault.empty() )
      return fault;
   for ( const ValueReport &value : cage.values )
      if ( value.reading.state != State::Unsupported && value.reading.fault != Fault() )
         return toText( value.reading.fault );
   return {};
}

bool isCage( const ObjectReport &object ) { return object.type == "xcvr"; }

std::vector<std::string> gridOf( const BoardReport &board, size_t columns ) {
   std::vector<std::string> cells;
   std::map<std::string, std::vector<std::string>> faults;
   for ( const ObjectReport &object : board ) {
      if ( !isCage( object ) )
         continue;
      cells.push_back( object.name + " " + marksOf( object ) );
      if ( const std::string fault = faultOf( object ); !fault.empty() )
         faults[fault].push_back( object.name );
   }
   if ( cells.empty() )
      return {};
   size_t width = 0;
   for ( const std::string &cell : cells )
      width = std::max( width, Screen::widthOf( cell ) + gap );
   const size_t perRow =
      std::max<size_t>( 1, ( ( columns > 0 ? columns : usualWidth ) + gap ) / width );
   std::vector<std::string> grid;
   Screen::wrap( grid, fmt::format( "CAGES  {}", cageLegend ), 7, columns );
   for ( size_t i = 0; i < cells.size(); ++i ) {
      if ( i % perRow == 0 )
         grid.emplace_back();
      const bool isLast = i % perRow == perRow - 1 || i + 1 == cells.size();
      grid.back() += isLast ? cells[i] : Screen::fill( cells[i], width );
   }
   for ( const auto &[fault, names] : faults )
      Screen::wrap( grid,
                    names.size() == 1 ? fmt::format( "{}: {}", names.front(), fault )
                                      : fmt::format( "{} and {} more: {}", names.front(),
                                                     names.size() - 1, fault ),
                    2, columns );
   return grid;
}

} // namespace Host
