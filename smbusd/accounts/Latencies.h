// How long something took, as a histogram. Eight steps from each power of two to the next, so that
// a time is known to an eighth; memory stays the same however many times there are.
#pragma once

#include "smbus/Clock.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace Smbusd {

class Latencies {
 public:
   using Time = Bus::Clock::Time;

   void add( Time took ) { ++counts_[stepOf( took )]; }

   // Calls back with the longest time of each step that is not empty, in ns, and how many had it.
   template <typename Callback>
   void each( Callback callback ) const {
      for ( size_t step = 0; step < counts_.size(); ++step )
         if ( counts_[step] > 0 )
            callback( longestOf( step ), counts_[step] );
   }

 private:
   static constexpr unsigned fineBits = 3;
   static constexpr size_t steps = ( 64 - fineBits + 1 ) << fineBits;

   static size_t stepOf( Time took ) {
      const auto time = static_cast<uint64_t>( took.count() < 0 ? 0 : took.count() );
      if ( time < 1u << fineBits )
         return static_cast<size_t>( time );
      const auto shift = static_cast<unsigned>( std::bit_width( time ) ) - 1 - fineBits;
      return ( ( size_t{ shift } + 1 ) << fineBits ) +
             ( time >> shift & ( ( 1u << fineBits ) - 1 ) );
   }
   static uint64_t longestOf( size_t step ) {
      if ( step < 1u << fineBits )
         return step;
      const size_t shift = ( step >> fineBits ) - 1;
      const uint64_t lead = ( step & ( ( 1u << fineBits ) - 1 ) ) + ( 1u << fineBits );
      return ( ( lead + 1 ) << shift ) - 1;
   }

   std::array<uint64_t, steps> counts_{};
};

} // namespace Smbusd
