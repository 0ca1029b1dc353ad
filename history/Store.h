// What the numbers of a board were: each reading of the last hour, and the lowest and highest of
// each minute of the last day.
#pragma once

#include "health/Instant.h"
#include "health/State.h"
#include "history/Series.h"

#include <string>
#include <string_view>
#include <vector>

namespace History {

struct Limits {
   std::chrono::milliseconds readings = std::chrono::hours( 1 );
   std::chrono::milliseconds minutes = std::chrono::hours( 24 );
   // What all of it may take. At the limit the oldest readings of the board go first, then the
   // oldest minutes.
   size_t bytes = 40'000'000;
};

class Store {
 public:
   explicit Store( const Limits &limits = {} ) : limits_( limits ) {}

   // Takes what is new in a report: numbers, and yes and no as 1 and 0. A value that can't be read
   // has a gap.
   void add( const Health::BoardReport &report, const Health::Instant &now );

   // The values of an object that have, or had, a number.
   const std::vector<Series> &of( size_t object ) const;

   // What the chunks take.
   size_t bytes() const { return bytes_; }

 private:
   Series &series( size_t object, const Health::Reading &reading );
   void shrink();

   const Limits limits_;
   std::vector<std::vector<Series>> objects_{}; // by number
   size_t bytes_ = 0;
};

} // namespace History
