#include "smbusd/accounts/PassedTransfers.h"

#include <algorithm>

namespace Smbusd {

namespace {

// Into memory that is there already. Returns how many bytes are not kept.
size_t copyData( const std::string &from, std::string &to ) {
   const size_t kept = std::min( from.size(), PassedTransfers::largestData );
   to.assign( from, 0, kept );
   return from.size() - kept;
}

} // namespace

void PassedTransfers::add( Bus::Clock::Time begun, Bus::Clock::Time took,
                           const Bus::Transfer &transfer, const Bus::Outcome &outcome,
                           size_t segment, const Peer &client ) {
   if ( ring_.size() < capacity )
      ring_.emplace_back();
   PassedTransfer &passed = ring_[next_];
   next_ = ( next_ + 1 ) % capacity;
   passed.number = ++passed_;
   passed.begun = begun;
   passed.took = took;
   passed.segment = segment;
   passed.client = client;
   Bus::Transfer &kept = passed.transfer;
   kept.kind = transfer.kind;
   kept.address = transfer.address;
   kept.offset = transfer.offset;
   kept.offsetBytes = transfer.offsetBytes;
   kept.length = transfer.length;
   kept.pec = transfer.pec;
   passed.cut = copyData( transfer.data, kept.data );
   passed.cut += copyData( outcome.data, passed.outcome.data );
   passed.outcome.error = outcome.error;
   passed.outcome.bytes = outcome.bytes;
}

const PassedTransfer &PassedTransfers::at( size_t age ) const {
   return ring_[( next_ + capacity - 1 - age ) % capacity];
}

void PassedTransfers::keepFailure() {
   if ( failures_.size() == failuresKept )
      failures_.pop_front();
   std::vector<PassedTransfer> &failure = failures_.emplace_back();
   for ( size_t age = std::min( ring_.size(), keptBefore ); age-- > 0; )
      failure.push_back( at( age ) );
}

std::vector<PassedTransfer> PassedTransfers::last() const {
   std::vector<PassedTransfer> list;
   list.reserve( ring_.size() );
   for ( size_t age = ring_.size(); age-- > 0; )
      list.push_back( at( age ) );
   return list;
}

// Two failures soon after each other have some transfers in common.
std::vector<PassedTransfer> PassedTransfers::ofFailures() const {
   std::vector<PassedTransfer> list;
   for ( const auto &failure : failures_ )
      for ( const PassedTransfer &passed : failure )
         if ( list.empty() || passed.number > list.back().number )
            list.push_back( passed );
   return list;
}

} // namespace Smbusd
