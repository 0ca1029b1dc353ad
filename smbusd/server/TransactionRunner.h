#pragma once

#include "OrbisUtil/Smbus.pb.h"
#include "smbus/Clock.h"
#include "smbus/RootBus.h"
#include "smbusd/accounts/BusAccount.h"

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
   // The account is told of every transfer; it may be null.
   TransactionRunner( Bus::RootBus &bus, const Bus::Clock &clock, BusAccount *account = nullptr )
      : bus_( bus ), clock_( clock ), account_( account ) {}

   // Fills an empty response. On failure it has the answers up to the failed request, and its error
   // names that request and the reason.
   void run( const Bus::Transaction &, Smbus::TransactionResponse & );

 private:
   void retryPendingDeselects();
   Bus::Outcome attempt( const Bus::Transfer &, const Bus::Transaction &, BusAccount::Mux,
                         Bus::Clock::Time end );
   Bus::Outcome transferOnce( const Bus::Transfer &, BusAccount::Mux );

   Bus::RootBus &bus_;
   const Bus::Clock &clock_;
   BusAccount *const account_;
   Bus::Clock::Time now_{ 0 }; // the end of the last transfer, or the start of the transaction
   std::map<uint8_t, Bus::Transfer> pendingDeselects_; // by address
};

} // namespace Smbusd
