#pragma once

#include "boardfiles/Board.h"
#include "host/State.h"
#include "host/session/BackOff.h"

#include <vector>

namespace Host {

// The fault of an object that was not tried yet.
inline constexpr auto notBroughtUp = "not brought up yet";

// What is known of one object: its state, its last values, and when they were read.
class ObjectRecord {
 public:
   explicit ObjectRecord( Time now ) : at_( now ) {}

   // The object was brought up, or read without a fault.
   void good( Time now );
   // The object can't be used. All values that were read become unreadable.
   void failed( const Fault &fault, Time now );
   // There is no module that could have values.
   void absent( Time now );
   // All values that the object has now, measured at `at`. Others are gone.
   void readAll( const std::vector<Reading> &readings, Time at );
   // A value that was measured at `at`.
   void read( const Reading &reading, Time at );
   // A reading that failed at `at`. The last value of this name stays, with its time.
   void missed( const Reading &reading, Time at );
   // A setting. It stays until the next one, and does not become stale.
   void keep( const Reading &reading, Time at );

   // Why the object can't be used. Empty while it is good.
   const Fault &fault() const { return fault_; }
   // The value with this name, or null.
   const Reading *find( const std::string &name ) const;

   // Good values that are older than `staleAfter` are reported as stale. An object that is up has
   // the state of its values when none of them is good.
   ObjectReport report( const BoardFiles::ObjectDescription &description,
                        Clock::duration staleAfter, Time now ) const;

 private:
   struct Value {
      Reading reading;
      Time at;
      bool isSetting;
   };

   void put( const Value &value );
   const Value *findValue( const std::string &name ) const;

   State state_ = State::Unreadable;
   Fault fault_{ .words = notBroughtUp };
   Time at_;
   std::vector<Value> values_{};
};

} // namespace Host
