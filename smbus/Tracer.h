#pragma once

#include "smbus/Control.pb.h"

#include <atomic>
#include <functional>
#include <map>
#include <mutex>

namespace Bus {

// Passes every transfer to its listeners. Thread-safe. Costs almost nothing without listeners.
class Tracer {
 public:
   using Listener = std::function<void( const SmbusControl::Transfer & )>;

   bool hasListeners() const { return count_ > 0; }
   void report( const SmbusControl::Transfer &transfer ) {
      const std::lock_guard lock( mutex_ );
      for ( const auto &[owner, listener] : listeners_ )
         listener( transfer );
   }
   // The listener is called in the thread of the bus, so it must be quick.
   void add( const void *owner, Listener listener ) {
      const std::lock_guard lock( mutex_ );
      listeners_[owner] = std::move( listener );
      count_ = listeners_.size();
   }
   // The listener is not called any more after this.
   void remove( const void *owner ) {
      const std::lock_guard lock( mutex_ );
      listeners_.erase( owner );
      count_ = listeners_.size();
   }

 private:
   std::mutex mutex_;
   std::map<const void *, Listener> listeners_;
   std::atomic<size_t> count_ = 0;
};

} // namespace Bus
