#include "host/terminal/Standing.h"

#include <algorithm>
#include <fmt/format.h>
#include <numeric>

namespace Host {

using Screen::Style;

const Sign &signOf( Standing standing ) {
   static constexpr std::array signs{ Sign{ "  ", "ok", Style::Good },
                                      Sign{ "  ", "other", Style::Plain },
                                      Sign{ " -", "absent", Style::Faint },
                                      Sign{ " ~", "stale", Style::Unknown },
                                      Sign{ " ?", "unreadable", Style::Unknown },
                                      Sign{ " !", "warning", Style::Warning },
                                      Sign{ "!!", "critical", Style::Critical } };
   return signs.at( static_cast<size_t>( standing ) );
}

Standing standingOf( Health::Level level ) {
   switch ( level ) {
   case Health::Level::Warning:
      return Standing::Warning;
   case Health::Level::Critical:
      return Standing::Critical;
   case Health::Level::Indeterminate:
      return Standing::Unreadable;
   default:
      return Standing::Ok;
   }
}

namespace {

Standing standingOf( State state ) {
   switch ( state ) {
   case State::Ok:
      return Standing::Ok;
   case State::Stale:
      return Standing::Stale;
   case State::Unreadable:
      return Standing::Unreadable;
   case State::Absent:
      return Standing::Absent;
   default:
      return Standing::Other;
   }
}

} // namespace

Standing standingOf( const ObjectReport &object, size_t value ) {
   if ( object.health && value < object.health->values.size() &&
        isBeyond( object.health->values[value].level ) )
      return standingOf( object.health->values[value].level );
   return standingOf( object.values[value].reading.state );
}

Standing standingOf( const ObjectReport &object ) {
   if ( object.health && object.health->isAbsent )
      return Standing::Absent;
   Standing worst = standingOf( object.state );
   if ( object.health && isBeyond( object.health->level ) )
      worst = std::max( worst, standingOf( object.health->level ) );
   for ( size_t i = 0; i < object.values.size(); ++i )
      if ( const Standing one = standingOf( object, i ); one != Standing::Other )
         worst = std::max( worst, one );
   return worst;
}

Screen::Line StandingCount::line() const {
   Screen::Line line{ { fmt::format(
      "{}", std::accumulate( counts_.begin(), counts_.end(), size_t{ 0 } ) ) } };
   for ( size_t i = counts_.size(); i-- > static_cast<size_t>( Standing::Absent ); )
      if ( counts_[i] > 0 ) {
         const Sign &sign = signOf( static_cast<Standing>( i ) );
         line.push_back( { line.size() == 1 ? ": " : ", " } );
         line.push_back( { fmt::format( "{} {}", counts_[i], sign.word ), sign.style } );
      }
   return line;
}

} // namespace Host
