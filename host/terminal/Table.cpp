#include "host/terminal/Table.h"

#include "boardfiles/Kind.h"
#include "host/terminal/CageGrid.h"
#include "screen/Columns.h"

#include <cmath>
#include <fmt/format.h>

namespace Host {
namespace {

std::string show( std::monostate ) { return "-"; }
std::string show( bool flag ) { return flag ? "yes" : "no"; }
std::string show( int64_t number ) { return fmt::format( "{}", number ); }
// Four digits, as many as the chips' numbers have; one of them at least behind the point. JSON has
// them all.
std::string show( double number ) {
   const double size = std::abs( number );
   std::string text = fmt::format( "{:.{}f}", number, size < 10 ? 3 : size < 100 ? 2 : 1 );
   while ( text.ends_with( '0' ) && !text.ends_with( ".0" ) )
      text.pop_back();
   return text;
}
std::string show( const std::string &text ) { return text.empty() ? "-" : text; }

std::string withUnit( const Reading &reading ) {
   const std::string text = toText( reading.value );
   const bool bare =
      reading.unit.empty() || std::holds_alternative<std::monostate>( reading.value );
   return bare ? text : text + " " + reading.unit;
}

std::string ageText( double age ) { return fmt::format( "{:.1f} s", age ); }

// What is on an absent module is absent, and a value beyond a limit has that level in place of
// "ok".
std::string stateText( const ObjectReport &object, size_t value ) {
   const Reading &reading = object.values[value].reading;
   if ( !object.health || value >= object.health->values.size() )
      return std::string( nameOf( reading.state ) );
   if ( object.health->isAbsent )
      return std::string( nameOf( State::Absent ) );
   const Health::Level level = object.health->values[value].level;
   const bool isBeyond = level == Health::Level::Warning || level == Health::Level::Critical;
   return std::string( isBeyond ? nameOf( level ) : nameOf( reading.state ) );
}

// The limit that it crossed; or its fault, and what explains that beside the object itself.
std::string faultText( const ObjectReport &object, size_t value ) {
   const Reading &reading = object.values[value].reading;
   const std::string own = toText( reading.fault );
   if ( !object.health || value >= object.health->values.size() )
      return Screen::orDash( own );
   const Health::ObjectHealth &health = *object.health;
   if ( !health.values[value].crossed.empty() )
      return health.values[value].crossed;
   if ( health.isAbsent && !health.cause.empty() )
      return health.cause;
   const bool isOther = !health.cause.empty() && !health.cause.starts_with( object.name + " " );
   return own.empty() || !isOther ? Screen::orDash( own )
                                  : fmt::format( "{} (because of: {})", own, health.cause );
}

std::vector<std::string> rowOf( const ObjectReport &object, size_t i ) {
   const ValueReport &value = object.values[i];
   return { object.name,
            object.type,
            value.reading.name,
            withUnit( value.reading ),
            stateText( object, i ),
            ageText( value.age ),
            faultText( object, i ) };
}

std::vector<std::string> rowOf( const ObjectReport &object ) {
   return { object.name,
            object.type,
            "-",
            "-",
            std::string( nameOf( object.state ) ),
            ageText( object.age ),
            Screen::orDash( toText( object.fault ) ) };
}

// Modules have a table of their own. Here is only what is wrong with them.
void addWrong( Screen::Rows &rows, const ObjectReport &module ) {
   if ( isBad( module.state ) ) {
      rows.push_back( rowOf( module ) );
      return;
   }
   for ( size_t i = 0; i < module.values.size(); ++i ) {
      const bool isJudged = module.health && i < module.health->values.size();
      if ( isBad( module.values[i].reading.state ) ||
           ( isJudged && isBeyond( module.health->values[i].level ) ) )
         rows.push_back( rowOf( module, i ) );
   }
}

constexpr size_t typeColumn = 1, valueColumn = 3;

Screen::Rows rowsOf( const BoardReport &board ) {
   Screen::Rows rows{ { "NAME", "TYPE", "READING", "VALUE", "STATE", "AGE", "FAULT" } };
   for ( const ObjectReport &object : board ) {
      if ( isCage( object ) )
         continue;
      if ( object.type == nameOf( BoardFiles::Kind::Module ) ) {
         addWrong( rows, object );
         continue;
      }
      if ( object.values.empty() )
         rows.push_back( rowOf( object ) );
      for ( size_t i = 0; i < object.values.size(); ++i )
         rows.push_back( rowOf( object, i ) );
   }
   return rows;
}

} // namespace

std::string toText( const Scalar &value ) {
   return std::visit( []( const auto &what ) { return show( what ); }, value );
}

std::vector<std::string> tableOf( const BoardReport &board, size_t columns ) {
   std::vector<std::string> lines = Screen::inColumns(
      rowsOf( board ), columns,
      { .hasNotes = true, .dispensable = { typeColumn }, .wrapped = valueColumn } );
   if ( const auto grid = gridOf( board, columns ); !grid.empty() ) {
      lines.emplace_back();
      lines.insert( lines.end(), grid.begin(), grid.end() );
   }
   return lines;
}

} // namespace Host
