#include "host/terminal/ObjectText.h"

#include "host/Times.h"
#include "host/terminal/Table.h"
#include "screen/Sparkline.h"

#include <fmt/ranges.h>

namespace Host {
namespace {

std::string withUnit( double number, const std::string &unit ) {
   return toText( Scalar( number ) ) + ( unit.empty() ? "" : " " + unit );
}

std::string timeOfDay( Health::WallTime time ) { return localTimeText( time ).substr( 11 ); }

// Nothing: there is no terminal to draw on. Empty: what was last read is all that is known.
using History = std::optional<std::vector<double>>;

void addHealth( TextSections &screen, const Health::ValueHealth &health, const std::string &unit,
                const History &history ) {
   const auto number = [&unit]( double what ) { return withUnit( what, unit ); };
   if ( !health.crossed.empty() )
      screen.line( "  " + health.crossed, 4 );
   if ( health.limits ) {
      std::vector<std::string> limits;
      const auto limit = [&]( const char *where, const std::optional<double> &what ) {
         if ( what )
            limits.push_back( fmt::format( "{} {}", where, number( *what ) ) );
      };
      limit( "critical below", health.limits->lowCritical );
      limit( "warning below", health.limits->lowWarning );
      limit( "warning above", health.limits->highWarning );
      limit( "critical above", health.limits->highCritical );
      screen.line( fmt::format( "  limits: {}", fmt::join( limits, ", " ) ), 4 );
   }
   if ( health.since != Health::WallTime() )
      screen.line( fmt::format( "  {} since {}; {} change{} of level before",
                                nameOf( health.level ), localTimeText( health.since ),
                                health.changes, health.changes == 1 ? "" : "s" ),
                   4 );
   if ( health.lowest && health.highest )
      screen.line( fmt::format( "  lowest {} at {}, highest {} at {}",
                                number( health.lowest->number ), localTimeText( health.lowest->at ),
                                number( health.highest->number ),
                                localTimeText( health.highest->at ) ),
                   4 );
   std::vector<std::string> last;
   std::vector<double> numbers;
   for ( const Health::Extreme &reading : health.last ) {
      numbers.push_back( reading.number );
      last.push_back( toText( Scalar( reading.number ) ) );
   }
   if ( history && history->size() > numbers.size() )
      screen.line( fmt::format( "  {} 10 min", Screen::sparkline( *history, 50 ) ) );
   else if ( history && last.size() > 1 )
      screen.line( "  " + Screen::sparkline( numbers ) );
   if ( !last.empty() )
      screen.line( fmt::format( "  last, {} to {}: {}", timeOfDay( health.last.front().at ),
                                timeOfDay( health.last.back().at ), fmt::join( last, ", " ) ),
                   4 );
}

std::vector<double> numbersOf( const NumbersByValue &history, const std::string &value ) {
   const auto found = history.find( value );
   return found == history.end() ? std::vector<double>() : found->second;
}

// A value beyond a limit has its level in place of "ok".
std::string_view wordOf( const ObjectReport &object, size_t value ) {
   const bool isJudged = object.health && value < object.health->values.size();
   return isJudged && isBeyond( object.health->values[value].level )
             ? nameOf( object.health->values[value].level )
             : nameOf( object.values[value].reading.state );
}

} // namespace

void addValues( TextSections &screen, const ObjectReport &object, const NumbersByValue *history ) {
   screen.section( "values" );
   for ( size_t i = 0; i < object.values.size(); ++i ) {
      const Reading &reading = object.values[i].reading;
      const std::string fault = toText( reading.fault );
      const bool hasNumber = !std::holds_alternative<std::monostate>( reading.value );
      screen.line( fmt::format(
         "{}: {}{}, {}{}, {:.1f} s old", reading.name, toText( reading.value ),
         hasNumber && !reading.unit.empty() ? " " + reading.unit : "", wordOf( object, i ),
         fault.empty() ? "" : ": " + fault, object.values[i].age ) );
      if ( object.health && i < object.health->values.size() )
         addHealth( screen, object.health->values[i], reading.unit,
                    history ? History( numbersOf( *history, reading.name ) ) : History() );
   }
   if ( object.values.empty() )
      screen.line( "none are read" );
}

void addCauses( TextSections &screen, const std::vector<Health::Cause> &causes ) {
   for ( const Health::Cause &cause : causes ) {
      screen.line( fmt::format( "because of \"{}\": {}", cause.key, cause.words ) );
      screen.line( fmt::format( "  {} since {}{}{}", nameOf( cause.level ),
                                localTimeText( cause.since ),
                                cause.isAcknowledged ? ", acknowledged" : "",
                                cause.isHidden ? ", hidden by another cause now" : "" ),
                   4 );
      if ( !cause.explains.empty() )
         screen.line( "  explains " + screen.list( cause.explains ), 4 );
   }
}

} // namespace Host
