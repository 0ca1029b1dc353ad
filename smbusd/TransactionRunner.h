#pragma once

#include "OrbisUtil/Smbus.pb.h"
#include "smbus/Clock.h"
#include "smbus/RootBus.h"

#include <map>
#include <string>

namespace Smbusd {

// Carries out transactions on one root bus, one after another, and sees to it that what they
// open is closed again: after a failure nothing more is carried out, except a send byte to an
// address to which the transaction already sent or tried to send one. Such a close that fails is
// owed, and tried again before each later transaction until the address acknowledges a send byte.
class TransactionRunner {
 public:
   TransactionRunner( Bus::RootBus &bus, const Bus::Clock &clock ) : bus_( bus ), clock_( clock ) {}

   // On failure the answer holds the responses up to the request that failed, and its error says
   // which that was and why.
   Smbus::TransactionResponse run( const Bus::Transaction & );

 private:
   void retryPendingDeselects();
   Bus::Outcome attempt( const Bus::Transfer &, const Bus::Transaction &, Bus::Clock::Time end );

   Bus::RootBus &bus_;
   const Bus::Clock &clock_;
   std::map<uint8_t, Bus::Transfer> pendingDeselects_; // by address
};

} // namespace Smbusd
