#pragma once

#include "OrbisUtil/Smbus.pb.h"
#include "smbus/Clock.h"
#include "smbus/RootBus.h"

#include <map>
#include <string>

namespace Smbusd {

// Carries out transactions on one root bus, one after another, and makes sure that each closes the
// multiplexers that it opened. A multiplexer is set by a send byte; a second send byte to the same
// address deselects it. After a failure only deselects are carried out. A deselect that fails stays
// pending: it is tried again before each later transaction, until the address acknowledges a send
// byte.
class TransactionRunner {
 public:
   TransactionRunner( Bus::RootBus &bus, const Bus::Clock &clock ) : bus_( bus ), clock_( clock ) {}

   // On failure the answer has the responses up to the failed request. Its error names that request
   // and the reason.
   Smbus::TransactionResponse run( const Bus::Transaction & );

 private:
   void retryPendingDeselects();
   Bus::Outcome attempt( const Bus::Transfer &, const Bus::Transaction &, Bus::Clock::Time end );

   Bus::RootBus &bus_;
   const Bus::Clock &clock_;
   std::map<uint8_t, Bus::Transfer> pendingDeselects_; // by address
};

} // namespace Smbusd
