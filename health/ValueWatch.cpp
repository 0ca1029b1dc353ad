#include "health/ValueWatch.h"

#include "health/Texts.h"

#include <fmt/format.h>

namespace Health {

std::optional<double> ValueWatch::limitOf( size_t which ) const {
   switch ( which ) {
   case LowCritical:
      return limits_.lowCritical;
   case LowWarning:
      return limits_.lowWarning;
   case HighWarning:
      return limits_.highWarning;
   default:
      return limits_.highCritical;
   }
}

void ValueWatch::known( std::optional<double> value, const Instant &now, double age ) {
   if ( !value ) {
      judge( now );
      return;
   }
   const double number = *value;
   if ( !lowest_ || number < lowest_->number )
      lowest_ = { number, now.wall };
   if ( !highest_ || number > highest_->number )
      highest_ = { number, now.wall };
   const auto readAt =
      now.wall - std::chrono::round<WallTime::duration>( std::chrono::duration<double>( age ) );
   if ( keep( number, readAt ) )
      alarmBefore_ = alarm_;
   for ( size_t which = 0; which < Count; ++which ) {
      const auto limit = limitOf( which );
      if ( !limit )
         continue;
      Side &side = sides_[which];
      const bool isLow = which == LowCritical || which == LowWarning;
      const double beyond = isLow ? *limit - number : number - *limit;
      side.isBeyond = beyond > ( side.counts ? -limits_.hysteresis : 0 );
      if ( !side.isBeyond )
         side.since.reset();
      else if ( !side.since )
         side.since = now;
      if ( side.isBeyond && secondsBetween( *side.since, now ) >= limits_.hold )
         side.counts = true;
      else if ( !side.isBeyond && !limits_.latched )
         side.counts = false;
   }
   judge( now );
}

// A reading is judged in every round until the next one comes.
bool ValueWatch::keep( double number, WallTime readAt ) {
   constexpr auto shortest = std::chrono::milliseconds( 50 ); // between two readings
   if ( read_ > 0 && readAt < last_[( read_ - 1 ) % kept].at + shortest )
      return false;
   last_[read_++ % kept] = { number, readAt };
   return true;
}

std::vector<Extreme> ValueWatch::last() const {
   std::vector<Extreme> readings;
   for ( size_t i = read_ > kept ? read_ - kept : 0; i < read_; ++i )
      readings.push_back( last_[i % kept] );
   return readings;
}

void ValueWatch::judge( const Instant &now ) {
   if ( sides_[LowCritical].counts || sides_[HighCritical].counts )
      alarm_ = Level::Critical;
   else if ( sides_[LowWarning].counts || sides_[HighWarning].counts )
      alarm_ = Level::Warning;
   else
      alarm_ = Level::Ok;
   becomes( alarm_, now );
}

void ValueWatch::unknown( const Instant &now ) {
   for ( Side &side : sides_ )
      if ( !side.counts )
         side.since.reset();
   becomes( Level::Indeterminate, now );
}

void ValueWatch::acknowledge( const Instant &now ) {
   if ( level_ == Level::Indeterminate )
      return;
   for ( Side &side : sides_ )
      side.counts = side.counts && side.isBeyond;
   judge( now );
}

void ValueWatch::knows( const BoardFiles::ValueLimits &limits ) {
   limits_ = ofBoard_; // another device may be there now
   const auto add = []( std::optional<double> &to, const std::optional<double> &from ) {
      if ( !to )
         to = from;
   };
   add( limits_.lowCritical, limits.lowCritical );
   add( limits_.lowWarning, limits.lowWarning );
   add( limits_.highWarning, limits.highWarning );
   add( limits_.highCritical, limits.highCritical );
   if ( limits_.hysteresis == 0 )
      limits_.hysteresis = limits.hysteresis;
   if ( limits.ignored )
      limits_ = {};
   for ( size_t which = 0; which < Count; ++which )
      if ( !limitOf( which ) )
         sides_[which] = {};
}

void ValueWatch::becomes( Level level, const Instant &now ) {
   if ( level == level_ && since_ != WallTime() )
      return;
   if ( since_ != WallTime() )
      ++changes_;
   level_ = level;
   since_ = now.wall;
}

std::optional<double> ValueWatch::limit() const {
   for ( const size_t which : { LowCritical, HighCritical, LowWarning, HighWarning } )
      if ( sides_[which].counts )
         return limitOf( which );
   return {};
}

std::string ValueWatch::crossed( const std::string &unit ) const {
   for ( const size_t which : { LowCritical, HighCritical, LowWarning, HighWarning } )
      if ( sides_[which].counts )
         return fmt::format( "{} the {} limit of {}",
                             which == LowCritical || which == LowWarning ? "below" : "above",
                             which == LowCritical || which == HighCritical ? "critical" : "warning",
                             quantityText( *limitOf( which ), unit ) );
   return {};
}

ValueHealth ValueWatch::health( const std::string &unit ) const {
   ValueHealth health{ .level = level_,
                       .since = since_,
                       .changes = changes_,
                       .crossed = crossed( unit ),
                       .lowest = lowest_,
                       .highest = highest_ };
   if ( limits_.any() )
      health.limits = limits_;
   return health;
}

} // namespace Health
