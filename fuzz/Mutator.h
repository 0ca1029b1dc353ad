// Changes inputs at random, the same way on every machine.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace Fuzz {

class Mutator {
 public:
   // With at least one seed.
   explicit Mutator( std::vector<std::string> seeds ) : seeds_( std::move( seeds ) ) {}

   // A seed with a few changes: bytes, numbers, parts that are gone, there twice, or of another
   // one.
   std::string next();

 private:
   size_t below( size_t limit ) { return limit == 0 ? 0 : random_() % limit; }
   std::string_view partOf( std::string_view text );
   void change( std::string &input );

   const std::vector<std::string> seeds_;
   std::mt19937_64 random_{ 1 };
};

} // namespace Fuzz
