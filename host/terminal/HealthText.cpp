#include "host/terminal/HealthText.h"

#include "host/Times.h"
#include "screen/Wrap.h"

#include <fmt/ranges.h>

namespace Host {
namespace {

std::string_view wordOf( Health::Level level ) {
   switch ( level ) {
   case Health::Level::Ok:
      return "OK";
   case Health::Level::Warning:
      return "WARNING";
   case Health::Level::Critical:
      return "CRITICAL";
   default:
      return "UNKNOWN";
   }
}

// Of a unit that the convention has no sign for there is none.
std::string signOf( const std::string &unit ) { return unit == "%" ? unit : ""; }

} // namespace

std::string fineOf( const HealthReport &health ) {
   if ( health.objects == 0 && health.absent == 0 )
      return "nothing is known yet";
   std::string text = health.good == health.objects
                         ? fmt::format( "all {} objects are good", health.objects )
                         : fmt::format( "{} of {} objects are good", health.good, health.objects );
   if ( health.absent > 0 )
      text += fmt::format( "; {} more are of modules that are not there", health.absent );
   return text;
}

std::string summaryOf( const HealthReport &health ) {
   if ( health.causes.empty() )
      return fmt::format( "{}: {}{}", wordOf( health.level ),
                          health.level == Health::Level::Ok ? "" : "still looking for the cause; ",
                          fineOf( health ) );
   std::vector<std::string> keys;
   for ( const Health::Cause &cause : health.causes )
      keys.push_back( cause.key );
   return fmt::format( "{}: {} cause{}: {}", wordOf( health.level ), keys.size(),
                       keys.size() == 1 ? "" : "s", fmt::join( keys, ", " ) );
}

std::vector<std::string> linesOf( const HealthReport &health, size_t columns ) {
   constexpr size_t indent = 10;
   std::vector<std::string> lines;
   for ( const Health::Cause &cause : health.causes ) {
      Screen::wrap( lines,
                    fmt::format( "{:<10}{}: {}", nameOf( cause.level ), cause.key, cause.words ),
                    indent, columns );
      Screen::wrap( lines,
                    fmt::format( "{:10}since {}{}{}", "", localTimeText( cause.since ),
                                 cause.isAcknowledged ? ", acknowledged" : "",
                                 cause.isHidden ? ", hidden by another cause now" : "" ),
                    indent, columns );
      if ( !cause.explains.empty() )
         Screen::wrap( lines,
                       fmt::format( "{:10}explains {}", "", fmt::join( cause.explains, ", " ) ),
                       indent, columns );
   }
   if ( !health.causes.empty() )
      lines.push_back( fmt::format( "{:<10}{}", "ok", fineOf( health ) ) );
   return lines;
}

std::string performanceDataOf( const BoardReport &report ) {
   std::vector<std::string> all;
   for ( const ObjectReport &object : report )
      for ( size_t i = 0; i < object.values.size(); ++i ) {
         const Reading &reading = object.values[i].reading;
         const auto *whole = std::get_if<int64_t>( &reading.value );
         const auto *number = std::get_if<double>( &reading.value );
         if ( reading.state != State::Ok || ( !whole && !number ) || reading.unit.empty() )
            continue;
         const auto limits = object.health && i < object.health->values.size()
                                ? object.health->values[i].limits
                                : std::nullopt;
         // A range is LOW:HIGH, or HIGH alone where there is no low limit but 0.
         const auto range = []( const std::optional<double> &low,
                                const std::optional<double> &high ) {
            const std::string to = high ? fmt::format( "{}", *high ) : "";
            if ( low )
               return fmt::format( "{}:{}", *low, to );
            return high ? "~:" + to : "";
         };
         all.push_back(
            fmt::format( "'{}_{}'={}{};{};{}", object.name, reading.name,
                         whole ? static_cast<double>( *whole ) : *number, signOf( reading.unit ),
                         limits ? range( limits->lowWarning, limits->highWarning ) : "",
                         limits ? range( limits->lowCritical, limits->highCritical ) : "" ) );
      }
   return fmt::format( "{}", fmt::join( all, " " ) );
}

} // namespace Host
