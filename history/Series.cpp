#include "history/Series.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace History {

namespace {

constexpr Moment minute = std::chrono::minutes( 1 );

// The last chunk, or a new one where that is full or too old for its entries' times.
template <class Chunk>
Chunk &chunkFor( std::vector<std::unique_ptr<Chunk>> &chunks, Moment at, size_t &bytes ) {
   const bool fits = !chunks.empty() && chunks.back()->used < chunks.back()->entries.size() &&
                     ( at - chunks.back()->first ).count() <= std::numeric_limits<uint32_t>::max();
   if ( !fits ) {
      chunks.push_back( std::make_unique<Chunk>() );
      chunks.back()->first = at;
      bytes += sizeof( Chunk );
   }
   return *chunks.back();
}

template <class Chunk>
size_t forgetBefore( std::vector<std::unique_ptr<Chunk>> &chunks, Moment before ) {
   const auto isOld = [before]( const auto &chunk ) {
      return chunk->first + Moment( chunk->entries[chunk->used - 1].after ) < before;
   };
   const auto end = std::find_if_not( chunks.begin(), chunks.end(), isOld );
   const auto count = static_cast<size_t>( end - chunks.begin() );
   chunks.erase( chunks.begin(), end );
   return count * sizeof( Chunk );
}

template <class Chunk>
size_t forgetOldest( std::vector<std::unique_ptr<Chunk>> &chunks ) {
   if ( chunks.empty() )
      return 0;
   chunks.erase( chunks.begin() );
   return sizeof( Chunk );
}

} // namespace

size_t Series::add( Moment at, double number ) {
   if ( at <= last_ || !std::isfinite( number ) )
      return 0;
   const auto single = static_cast<float>( number );
   isGap_ = false;
   return addReading( at, single ) + addToMinute( at, single );
}

size_t Series::gap( Moment at ) {
   if ( isGap_ || at <= last_ )
      return 0;
   isGap_ = true;
   return addReading( at, std::numeric_limits<float>::quiet_NaN() );
}

size_t Series::addReading( Moment at, float number ) {
   size_t bytes = 0;
   Readings &chunk = chunkFor( readings_, at, bytes );
   chunk.entries[chunk.used++] = { static_cast<uint32_t>( ( at - chunk.first ).count() ), number };
   last_ = at;
   return bytes;
}

size_t Series::addToMinute( Moment at, float number ) {
   const Moment begin = at - at % minute;
   if ( !minutes_.empty() ) {
      Minutes &last = *minutes_.back();
      MinuteEntry &entry = last.entries[last.used - 1];
      if ( last.first + Moment( entry.after ) == begin ) {
         entry.lowest = std::min( entry.lowest, number );
         entry.highest = std::max( entry.highest, number );
         return 0;
      }
   }
   size_t bytes = 0;
   Minutes &chunk = chunkFor( minutes_, begin, bytes );
   chunk.entries[chunk.used++] = { static_cast<uint32_t>( ( begin - chunk.first ).count() ), number,
                                   number };
   return bytes;
}

size_t Series::forget( Moment readingsBefore, Moment minutesBefore ) {
   return forgetBefore( readings_, readingsBefore ) + forgetBefore( minutes_, minutesBefore );
}

size_t Series::forgetOldestReadings() { return forgetOldest( readings_ ); }

size_t Series::forgetOldestMinutes() { return forgetOldest( minutes_ ); }

std::vector<Sample> Series::readings( Moment from ) const {
   std::vector<Sample> samples;
   for ( const auto &chunk : readings_ )
      for ( size_t i = 0; i < chunk->used; ++i )
         if ( const Moment at = chunk->first + Moment( chunk->entries[i].after ); at >= from )
            samples.push_back( { at, chunk->entries[i].number } );
   return samples;
}

std::vector<Minute> Series::minutes( Moment from ) const {
   std::vector<Minute> minutes;
   for ( const auto &chunk : minutes_ )
      for ( size_t i = 0; i < chunk->used; ++i ) {
         const MinuteEntry &entry = chunk->entries[i];
         if ( const Moment at = chunk->first + Moment( entry.after ); at + minute > from )
            minutes.push_back( { at, entry.lowest, entry.highest } );
      }
   return minutes;
}

} // namespace History
