#pragma once

#include "smbus/Control.pb.h"

#include <atomic>
#include <functional>
#include <map>
#include <mutex>

namespace Bus {

// Hands every transfer to those who listen. For all threads; costs next to nothing while nobody
// listens.
class Tracer {
 public:
   using Listener = std::function<void( const SmbusControl::Transfer & )>;

   bool hasListeners() const { return count_ > 0; }
   void report( const SmbusControl::Transfer &transfer ) {
      const std::lock_guard lock( mutex_ );
      for ( const auto &[whose, listener] : listeners_ )
         listener( transfer );
   }
   // Called in the thread of the bus, so it has to be quick.
   void add( const void *whose, Listener listener ) {
      const std::lock_guard lock( mutex_ );
      listeners_[whose] = std::move( listener );
      count_ = listeners_.size();
   }
   // Is not called any more when this returns.
   void remove( const void *whose ) {
      const std::lock_guard lock( mutex_ );
      listeners_.erase( whose );
      count_ = listeners_.size();
   }

 private:
   std::mutex mutex_;
   std::map<const void *, Listener> listeners_;
   std::atomic<size_t> count_ = 0;
};

} // namespace Bus
