#include "health/Times.h"

#include <array>
#include <charconv>
#include <ctime>
#include <fmt/format.h>

namespace Health {
namespace {

using namespace std::chrono;

// Parses the whole text as strptime does. The fields that the format does not have stay.
bool parse( std::string_view text, const char *format, tm &fields ) {
   const std::string copy( text );
   const char *end = ::strptime( copy.c_str(), format, &fields );
   return end && end == copy.c_str() + copy.size();
}

WallTime fromLocal( tm fields ) {
   fields.tm_isdst = -1; // as it was on that day
   return WallTime( seconds( ::mktime( &fields ) ) );
}

tm toLocal( WallTime time ) {
   const std::time_t seconds = system_clock::to_time_t( floor<std::chrono::seconds>( time ) );
   tm fields{};
   ::localtime_r( &seconds, &fields );
   return fields;
}

std::optional<uint64_t> wholeNumber( std::string_view text ) {
   uint64_t number = 0;
   const auto [end, error] = std::from_chars( text.data(), text.data() + text.size(), number );
   if ( text.empty() || error != std::errc() || end != text.data() + text.size() )
      return {};
   return number;
}

// "90s", "10m", "2h", "3d".
std::optional<seconds> durationIn( std::string_view text ) {
   constexpr uint64_t tooMany = 1'000'000; // days: nothing is that old, and nothing overflows
   const auto count = wholeNumber( text.substr( 0, text.empty() ? 0 : text.size() - 1 ) );
   if ( !count )
      return {};
   for ( const auto &[unit, length] :
         { std::pair( 's', seconds( 1 ) ), std::pair( 'm', seconds( 60 ) ),
           std::pair( 'h', seconds( 3600 ) ), std::pair( 'd', seconds( 86400 ) ) } )
      if ( text.back() == unit &&
           *count <= tooMany * 86400 / static_cast<uint64_t>( length.count() ) )
         return length * static_cast<int64_t>( *count );
   return {};
}

// A time of the day has passed today, or else it was yesterday.
std::optional<WallTime> timeOfDayIn( std::string_view text, WallTime now ) {
   tm fields = toLocal( now );
   fields.tm_sec = 0;
   if ( !parse( text, "%H:%M:%S", fields ) && !parse( text, "%H:%M", fields ) )
      return {};
   if ( fromLocal( fields ) > now )
      --fields.tm_mday;
   return fromLocal( fields );
}

std::optional<WallTime> localTimeIn( std::string_view text ) {
   for ( const char *format : { "%Y-%m-%d %H:%M:%S", "%Y-%m-%d %H:%M", "%Y-%m-%dT%H:%M:%S",
                                "%Y-%m-%dT%H:%M", "%Y-%m-%d" } ) {
      tm fields{};
      if ( parse( text, format, fields ) )
         return fromLocal( fields );
   }
   return {};
}

} // namespace

std::string timeText( WallTime time ) {
   const auto day = floor<days>( time );
   const year_month_day date( day );
   const hh_mm_ss clock( time - day );
   return fmt::format( "{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:03}Z",
                       static_cast<int>( date.year() ), static_cast<unsigned>( date.month() ),
                       static_cast<unsigned>( date.day() ), clock.hours().count(),
                       clock.minutes().count(), clock.seconds().count(),
                       clock.subseconds().count() );
}

std::optional<WallTime> timeIn( std::string_view text ) {
   if ( !text.ends_with( 'Z' ) )
      return {};
   text.remove_suffix( 1 );
   milliseconds fraction{ 0 };
   if ( const auto point = text.find( '.' ); point != text.npos ) {
      const auto digits = wholeNumber( text.substr( point + 1 ) );
      if ( !digits || text.size() - point != 4 )
         return {};
      fraction = milliseconds( *digits );
      text = text.substr( 0, point );
   }
   tm fields{};
   if ( !parse( text, "%Y-%m-%dT%H:%M:%S", fields ) )
      return {};
   return WallTime( seconds( ::timegm( &fields ) ) + fraction );
}

std::string localTimeText( WallTime time ) {
   const tm fields = toLocal( time );
   std::array<char, 32> text{};
   return { text.data(), std::strftime( text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &fields ) };
}

std::optional<Since> sinceOf( std::string_view text, WallTime now ) {
   if ( const auto id = wholeNumber( text ) )
      return Since{ .id = *id };
   if ( const auto ago = durationIn( text ) )
      return Since{ .time = now - *ago };
   for ( const auto &time : { timeIn( text ), localTimeIn( text ), timeOfDayIn( text, now ) } )
      if ( time )
         return Since{ .time = time };
   return {};
}

} // namespace Health
