// Families of series, written one sample after the other.
#pragma once

#include "metrics/Format.h"
#include "metrics/Labels.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Metrics {

enum class Type { Gauge, Counter, Histogram, Info };
std::string_view nameOf( Type type ); // "gauge"

// What a family is. The texts must outlive their use.
struct Description {
   std::string_view name; // ends with its unit; without "_total" of counters and "_info"
   Type type = Type::Gauge;
   std::string_view unit{}; // "celsius"; empty: plain numbers
   std::string_view help{}; // a sentence
};
// The name of its series, "orbis_events_total". Those of a histogram have more behind it.
std::string seriesName( const Description &description );

// How often something took how long.
struct Histogram {
   struct Bucket {
      double upTo = 0;
      uint64_t count = 0; // of all that are not above that
   };
   std::vector<Bucket> buckets{}; // without the last one, which has no end
   uint64_t count = 0;
   std::optional<double> sum{}; // nothing where it isn't known
};

class Family {
 public:
   Family( const Description &description, Format format );

   void add( const Labels &labels, double value ) { sample( "", labels.text(), value ); }
   void add( const Labels &labels, const Histogram &histogram );

   bool isEmpty() const { return samples_.empty(); }
   size_t size() const { return samples_.size(); } // characters, without what is in front of them
   void appendTo( std::string &text ) const;

 private:
   void sample( std::string_view behind, std::string_view labels, double value );

   const Description description_;
   const Format format_;
   const std::string series_;
   std::string samples_{};
};

// All families that have a series, in this order.
std::string exposition( const std::vector<Family> &families, Format format );

} // namespace Metrics
