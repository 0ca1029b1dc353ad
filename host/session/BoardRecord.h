#pragma once

#include "boardfiles/Board.h"
#include "health/pmbus/Limits.h"
#include "host/State.h"
#include "host/session/Limits.h"
#include "host/session/ObjectRecord.h"

#include <map>
#include <vector>

namespace Host {

// What is known of each object of a board, by its number.
class BoardRecord {
 public:
   // `board` and `limits` must outlive this object.
   BoardRecord( const BoardFiles::Board &board, const Limits &limits, Time now );

   // The object was brought up, or read without a fault.
   void good( size_t object, Time now ) { objects_[object].good( now ); }
   // The object can't be used.
   void failed( size_t object, const Fault &fault, Time now ) {
      objects_[object].failed( fault, now );
   }
   // A value that was measured at `at`. A fan's speed also gives its duty, in percent of its
   // highest speed. A supply's status registers also give its STATUS_WORD, and a sentence.
   void read( size_t object, const Reading &reading, Time at );
   // All values of a module.
   void moduleWas( size_t object, const std::vector<Reading> &readings, Time at ) {
      objects_[object].readAll( readings, at );
   }
   // There is no module, or it had no time to start yet.
   void moduleIsAbsent( size_t object, Time now ) { objects_[object].absent( now ); }
   // The registers with a supply's limits.
   void limitsWere( size_t object, const Health::Pmbus::Registers &registers ) {
      supplyLimits_[object] = Health::Pmbus::limitsIn( registers );
   }
   // An LED took a setting: a number of pl_led_status.
   void ledWasSet( size_t object, int64_t setting, Time now );
   // A fan took a speed, in rpm.
   void fanWasSet( size_t object, int64_t rpm, Time now );

   // Whether the object is an LED whose last setting was to blink.
   bool blinks( size_t object ) const;
   // Why the object can't be used.
   const Fault &fault( size_t object ) const { return objects_[object].fault(); }
   // The limits that the supply behind the object has. They stay while it can't be read.
   const std::vector<Health::Pmbus::Limit> &limits( size_t object ) const;
   BoardReport report( Time now ) const;

 private:
   const BoardFiles::Board &board_;
   const Limits &limits_;
   std::vector<ObjectRecord> objects_;
   std::map<size_t, std::vector<Health::Pmbus::Limit>> supplyLimits_{};
};

} // namespace Host
