#ifndef ORBIS_HOST_SESSION_OBJECTRECORD_H
#define ORBIS_HOST_SESSION_OBJECTRECORD_H

#include "Board.h"
#include "State.h"
#include "session/BackOff.h"

#include <vector>

namespace Host {

/// What is known of one object: whether it stands, its values as they were last read, and when.
class ObjectRecord {
 public:
   explicit ObjectRecord( Time now ) : at_( now ) {}

   /// The object was brought up, or asked without a fault.
   void isFine( Time now );
   /// Nothing of it can be read; values that were known are so no longer.
   void isUnreadable( const Fault &fault, Time now );
   void take( const Reading &reading, Time now );

   /// What was good and is older than `staleAfter` is reported as stale.
   ObjectReport report( const ObjectDescription &description, Clock::duration staleAfter,
                        Time now ) const;

 private:
   struct Value {
      Reading reading;
      Time at;
   };

   State state_ = State::Unreadable;
   Fault fault_{ .words = "not brought up yet" };
   Time at_;
   std::vector<Value> values_{};
};

} // namespace Host

#endif
