// Carries out the transactions of one root bus, one after another.
#pragma once

#include "OrbisUtil/Smbus.pb.h"
#include "smbus/RootBus.h"
#include "smbus/Transfer.h"
#include "smbusd/accounts/BusAccount.h"
#include "smbusd/server/TransactionRunner.h"

#include <map>
#include <memory>

namespace Smbusd {

class Executor {
 public:
   virtual ~Executor() = default;
   // Only the thread that has the bus calls it. The response is empty, but may have memory of an
   // earlier one.
   virtual void run( const Bus::Transaction &, Smbus::TransactionResponse & ) = 0;
   // What passed on the bus; null where there is none, as in a recording.
   virtual BusAccount *account() { return nullptr; }
   virtual const Quarantine *quarantine() const { return nullptr; }
};

using Executors = std::map<Bus::RootBusId, std::unique_ptr<Executor>>;

// Carries them out on a real or simulated bus, transfer by transfer.
class BusExecutor final : public Executor {
 public:
   // The clock of the wires is in Hz.
   BusExecutor( const Bus::RootBusId &id, std::unique_ptr<Bus::RootBus> bus,
                const Bus::Clock &clock, uint32_t wireClock )
      : bus_( std::move( bus ) ), account_( id, wireClock ), runner_( *bus_, clock, &account_ ) {}
   void run( const Bus::Transaction &transaction, Smbus::TransactionResponse &response ) override {
      runner_.run( transaction, response );
   }
   BusAccount *account() override { return &account_; }
   const Quarantine *quarantine() const override { return &runner_.quarantine(); }

 private:
   const std::unique_ptr<Bus::RootBus> bus_;
   BusAccount account_;
   TransactionRunner runner_;
};

// Of the wires, in Hz; busses that aren't there have the usual one.
using WireClocks = std::map<Bus::RootBusId, uint32_t>;

inline Executors executorsOn( Bus::Busses busses, const Bus::Clock &clock,
                              const WireClocks &wireClocks = {} ) {
   Executors executors;
   for ( auto &[id, bus] : busses ) {
      const auto found = wireClocks.find( id );
      executors.emplace( id, std::make_unique<BusExecutor>(
                                id, std::move( bus ), clock,
                                found == wireClocks.end() ? Bus::usualClock : found->second ) );
   }
   return executors;
}

} // namespace Smbusd
