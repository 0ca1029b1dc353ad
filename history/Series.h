#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace History {

// Since the steady clock's beginning, which no setting of the wall clock moves.
using Moment = std::chrono::milliseconds;

// A number, or NaN where a gap begins.
struct Sample {
   Moment at{};
   double number = 0;
};

// What a minute's numbers were between.
struct Minute {
   Moment at{}; // its beginning
   double lowest = 0;
   double highest = 0;
};

// The numbers of one value, as single precision: seven digits, more than a chip's.
class Series {
 public:
   Series( std::string name, std::string unit )
      : name_( std::move( name ) ), unit_( std::move( unit ) ) {}

   const std::string &name() const { return name_; }
   const std::string &unit() const { return unit_; }
   // When the last number, or gap, was.
   Moment last() const { return last_; }

   // Not what is as old as the last one, or older. Returns how many bytes that took.
   size_t add( Moment at, double number );
   // Nothing is known from now on, until the next number. Returns how many bytes that took.
   size_t gap( Moment at );
   // Forgets chunks that are wholly older. Returns how many bytes that freed.
   size_t forget( Moment readingsBefore, Moment minutesBefore );

   // Those from `from` on, oldest first.
   std::vector<Sample> readings( Moment from ) const;
   std::vector<Minute> minutes( Moment from ) const;

   // The oldest chunk's first moment; the end of all time when there is none.
   Moment oldestReading() const { return readings_.empty() ? Moment::max() : readings_[0]->first; }
   Moment oldestMinute() const { return minutes_.empty() ? Moment::max() : minutes_[0]->first; }
   // Returns how many bytes that freed.
   size_t forgetOldestReadings();
   size_t forgetOldestMinutes();

 private:
   // So much is allocated, and forgotten, at a time.
   static constexpr size_t readingsOfChunk = 120, minutesOfChunk = 60;

   template <class Entry, size_t count>
   struct Chunk {
      Moment first{};
      uint32_t used = 0;
      std::array<Entry, count> entries{};
   };
   struct Reading {
      uint32_t after; // the chunk's first moment, in milliseconds
      float number;
   };
   struct MinuteEntry {
      uint32_t after;
      float lowest, highest;
   };
   using Readings = Chunk<Reading, readingsOfChunk>;
   using Minutes = Chunk<MinuteEntry, minutesOfChunk>;

   size_t addReading( Moment at, float number );
   size_t addToMinute( Moment at, float number );

   std::string name_;
   std::string unit_;
   Moment last_ = Moment::min() / 2; // so that something may be added
   bool isGap_ = true;
   std::vector<std::unique_ptr<Readings>> readings_{};
   std::vector<std::unique_ptr<Minutes>> minutes_{};
};

} // namespace History
