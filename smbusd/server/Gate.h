#pragma once

#include "OrbisUtil/Smbus.pb.h"
#include "smbus/Transfer.h"
#include "smbusd/Peer.h"

namespace Smbusd {

// What the clients of one socket may do. For the threads of all clients.
class Gate {
 public:
   virtual ~Gate() = default;

   // Before any of the transaction is carried out. Throws Bus::Refused when the peer may not have
   // all of it carried out.
   virtual void check( const Bus::Transaction &, const Peer & ) const = 0;
   // After it was carried out, without the bus.
   virtual void passed( const Bus::Transaction &, const Smbus::TransactionResponse &,
                        const Peer & ) const {}
};

} // namespace Smbusd
