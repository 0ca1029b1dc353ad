#include "history/Store.h"

#include <algorithm>
#include <optional>

namespace History {

namespace {

std::optional<double> numberOf( const Health::Reading &reading ) {
   if ( const auto *number = std::get_if<double>( &reading.value ) )
      return *number;
   if ( const auto *number = std::get_if<int64_t>( &reading.value ) )
      return static_cast<double>( *number );
   if ( const auto *flag = std::get_if<bool>( &reading.value ) )
      return *flag ? 1 : 0;
   return {};
}

Moment momentOf( const Health::Instant &instant ) {
   return std::chrono::floor<Moment>( instant.steady.time_since_epoch() );
}

// A reading's age is told anew with each report, and not to the millisecond.
constexpr Moment sameReading( 10 );

} // namespace

void Store::add( const Health::BoardReport &report, const Health::Instant &now ) {
   const Moment moment = momentOf( now );
   objects_.resize( std::max( objects_.size(), report.size() ) );
   for ( size_t i = 0; i < report.size(); ++i ) {
      std::vector<bool> isKnown( objects_[i].size() );
      for ( const Health::ValueReport &value : report[i].values ) {
         const auto number = numberOf( value.reading );
         if ( !number || value.reading.state != Health::State::Ok )
            continue;
         Series &known = series( i, value.reading );
         const auto at =
            moment - std::chrono::round<Moment>( std::chrono::duration<double>( value.age ) );
         if ( at > known.last() + sameReading )
            bytes_ += known.add( at, *number );
         const auto index = static_cast<size_t>( &known - objects_[i].data() );
         if ( index < isKnown.size() )
            isKnown[index] = true;
      }
      for ( size_t j = 0; j < objects_[i].size(); ++j ) {
         if ( j < isKnown.size() && !isKnown[j] )
            bytes_ += objects_[i][j].gap( moment );
         bytes_ -= objects_[i][j].forget( moment - limits_.readings, moment - limits_.minutes );
      }
   }
   shrink();
}

const std::vector<Series> &Store::of( size_t object ) const {
   static const std::vector<Series> none;
   return object < objects_.size() ? objects_[object] : none;
}

Series &Store::series( size_t object, const Health::Reading &reading ) {
   std::vector<Series> &all = objects_[object];
   const auto found = std::find_if( all.begin(), all.end(), [&reading]( const Series &one ) {
      return one.name() == reading.name;
   } );
   return found != all.end() ? *found : all.emplace_back( reading.name, reading.unit );
}

void Store::shrink() {
   while ( bytes_ > limits_.bytes ) {
      Series *oldest = nullptr, *oldestOfMinutes = nullptr;
      for ( std::vector<Series> &object : objects_ )
         for ( Series &one : object ) {
            if ( !oldest || one.oldestReading() < oldest->oldestReading() )
               oldest = &one;
            if ( !oldestOfMinutes || one.oldestMinute() < oldestOfMinutes->oldestMinute() )
               oldestOfMinutes = &one;
         }
      size_t freed = oldest ? oldest->forgetOldestReadings() : 0;
      if ( freed == 0 && oldestOfMinutes )
         freed = oldestOfMinutes->forgetOldestMinutes();
      if ( freed == 0 )
         return;
      bytes_ -= freed;
   }
}

} // namespace History
