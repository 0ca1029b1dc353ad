#pragma once

#include <cstdint>
#include <random>
#include <vector>

// Random numbers that depend only on the seed and are equal in every ABI; the standard library does
// not promise that for its distributions.
class Random {
 public:
   explicit Random( uint32_t seed ) : engine_( seed ) {}

   uint32_t below( uint32_t end ) { return static_cast<uint32_t>( engine_() % end ); }
   int between( int least, int most ) {
      return least + static_cast<int>( below( static_cast<uint32_t>( most - least + 1 ) ) );
   }
   template <class Choice>
   const Choice &oneOf( const std::vector<Choice> &choices ) {
      return choices[below( static_cast<uint32_t>( choices.size() ) )];
   }

 private:
   std::mt19937 engine_;
};
