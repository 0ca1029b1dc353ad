// The last transfers of a root bus, and what led to its last failures.
#pragma once

#include "smbus/Clock.h"
#include "smbus/RootBus.h"
#include "smbusd/Peer.h"

#include <deque>
#include <vector>

namespace Smbusd {

struct PassedTransfer {
   uint64_t number = 0; // of the bus, from 1
   Bus::Clock::Time begun{ 0 };
   Bus::Clock::Time took{ 0 };
   Bus::Transfer transfer{};
   Bus::Outcome outcome{};
   size_t cut = 0;     // bytes of its data that are not kept
   size_t segment = 0; // of the bus
   Peer client{};
};

// Memory for a transfer that comes is that of the one it replaces.
class PassedTransfers {
 public:
   static constexpr size_t capacity = 512;
   static constexpr size_t largestData = 256; // bytes written, and as many read
   static constexpr size_t keptBefore = 16;   // transfers of a failure, with the failed one
   static constexpr size_t failuresKept = 8;

   void add( Bus::Clock::Time begun, Bus::Clock::Time took, const Bus::Transfer &,
             const Bus::Outcome &, size_t segment, const Peer &client );
   // The transaction of the last transfer has failed: keeps a copy of what passed until then.
   void keepFailure();

   // In the order of time.
   std::vector<PassedTransfer> last() const;
   std::vector<PassedTransfer> ofFailures() const;

 private:
   const PassedTransfer &at( size_t age ) const; // 0 is the newest

   std::vector<PassedTransfer> ring_; // grows to its capacity, then is used again
   size_t next_ = 0;
   uint64_t passed_ = 0;
   std::deque<std::vector<PassedTransfer>> failures_;
};

} // namespace Smbusd
