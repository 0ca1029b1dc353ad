#pragma once

#include "Clock.h"
#include "OrbisUtil/Smbus.pb.h"
#include "busses/RootBus.h"

#include <map>
#include <string>

namespace Smbusd {

// Carries out transactions on one root bus, one after another, and sees to it that what they
// open is closed again: after a failure nothing more is carried out, except a send byte to an
// address to which the transaction already sent or tried to send one. Such a close that fails is
// owed, and tried again before each later transaction until the address acknowledges a send byte.
class TransactionRunner {
 public:
   TransactionRunner( RootBus &bus, const Clock &clock ) : bus_( bus ), clock_( clock ) {}

   // On failure the answer holds the responses up to the request that failed, and its error says
   // which that was and why.
   Smbus::TransactionResponse run( const Transaction & );

 private:
   void settleOwed();
   Outcome attempt( const Transfer &, const Transaction &, Clock::Time end );

   RootBus &bus_;
   const Clock &clock_;
   std::map<uint8_t, Transfer> owed_; // by address
};

} // namespace Smbusd
