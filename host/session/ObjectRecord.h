#pragma once

#include "boardfiles/Board.h"
#include "host/State.h"
#include "host/session/BackOff.h"

#include <vector>

namespace Host {

// What is known of one object: whether it stands, its values as they were last read, and when.
class ObjectRecord {
 public:
   explicit ObjectRecord( Time now ) : at_( now ) {}

   // The object was brought up, or asked without a fault.
   void good( Time now );
   // Nothing of it can be read; values that were known are so no longer.
   void failed( const Fault &fault, Time now );
   // A value as it was read at `at`.
   void read( const Reading &reading, Time at );
   // A value that holds until it is replaced: what something was set to.
   void keep( const Reading &reading, Time at );

   // Why nothing of it can be read; no words while it is fine.
   const Fault &fault() const { return fault_; }
   // The last reading of a name; null when there was none.
   const Reading *find( const std::string &name ) const;

   // What was good and is older than `staleAfter` is reported as stale.
   ObjectReport report( const BoardFiles::ObjectDescription &description,
                        Clock::duration staleAfter, Time now ) const;

 private:
   struct Value {
      Reading reading;
      Time at;
      bool lasts;
   };

   void put( const Value &value );

   State state_ = State::Unreadable;
   Fault fault_{ .words = "not brought up yet" };
   Time at_;
   std::vector<Value> values_{};
};

} // namespace Host
