// The state of one value with limits.
#pragma once

#include "boardfiles/HealthKeys.h"
#include "health/Instant.h"
#include "health/State.h"

#include <array>

namespace Health {

// Judges one number by its limits. A limit counts once the number was beyond it for the hold time
// without a break, and until the number has come back by the hysteresis. A latched one counts until
// it is acknowledged, too. While the number isn't known the state is indeterminate, and what
// counted before that still counts when it is known again: nothing gets good because nobody looks.
class ValueWatch {
 public:
   explicit ValueWatch( const BoardFiles::ValueLimits &limits )
      : ofBoard_( limits ), limits_( limits ) {}

   // Nothing where the value is no number. It was read `age` seconds ago.
   void known( std::optional<double> number, const Instant &now, double age = 0 );
   void unknown( const Instant &now );
   // Of a latched limit.
   void acknowledge( const Instant &now );
   // All limits that the device itself knows now. They count where the board's files have none.
   void knows( const BoardFiles::ValueLimits &limits );

   Level level() const { return level_; }
   // It is good, and was when it was read before the last time.
   bool wasGoodBefore() const {
      return read_ > 1 && alarm_ == Level::Ok && alarmBefore_ == Level::Ok;
   }
   // The level when it was last known.
   Level alarm() const { return alarm_; }
   // The innermost limit of that level; nothing when it is good.
   std::optional<double> limit() const;
   // "above the critical limit of 100 °C"; empty when it is good.
   std::string crossed( const std::string &unit ) const;
   ValueHealth health( const std::string &unit ) const;
   // The last numbers that were read, oldest first.
   static constexpr size_t kept = 8;
   std::vector<Extreme> last() const;

 private:
   enum Which { LowCritical, LowWarning, HighWarning, HighCritical, Count };
   struct Side {
      bool counts = false;
      bool isBeyond = false;          // now
      std::optional<Instant> since{}; // beyond without a break, before it counts
   };

   std::optional<double> limitOf( size_t which ) const;
   void judge( const Instant &now );
   bool keep( double number, WallTime readAt ); // whether it is a new one
   void becomes( Level level, const Instant &now );

   BoardFiles::ValueLimits ofBoard_;
   BoardFiles::ValueLimits limits_; // with those of the device
   std::array<Side, Count> sides_{};
   Level level_ = Level::Indeterminate;
   Level alarm_ = Level::Ok;
   Level alarmBefore_ = Level::Ok; // at the reading before the last one
   WallTime since_{};
   uint64_t changes_ = 0;
   std::optional<Extreme> lowest_{}, highest_{};
   std::array<Extreme, kept> last_{}; // a ring
   size_t read_ = 0;                  // how many numbers were put into it
};

} // namespace Health
