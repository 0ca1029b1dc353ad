// Carries out the transactions of one root bus, one after another.
#pragma once

#include "OrbisUtil/Smbus.pb.h"
#include "smbus/RootBus.h"
#include "smbus/Transfer.h"
#include "smbusd/TransactionRunner.h"

#include <map>
#include <memory>

namespace Smbusd {

class Executor {
 public:
   virtual ~Executor() = default;
   // Only the thread of this bus calls it.
   virtual Smbus::TransactionResponse run( const Bus::Transaction & ) = 0;
};

using Executors = std::map<Bus::RootBusId, std::unique_ptr<Executor>>;

// Carries them out on a real or simulated bus, transfer by transfer.
class BusExecutor final : public Executor {
 public:
   BusExecutor( std::unique_ptr<Bus::RootBus> bus, const Bus::Clock &clock )
      : bus_( std::move( bus ) ), runner_( *bus_, clock ) {}
   Smbus::TransactionResponse run( const Bus::Transaction &transaction ) override {
      return runner_.run( transaction );
   }

 private:
   const std::unique_ptr<Bus::RootBus> bus_;
   TransactionRunner runner_;
};

inline Executors executorsOn( Bus::Busses busses, const Bus::Clock &clock ) {
   Executors executors;
   for ( auto &[id, bus] : busses )
      executors.emplace( id, std::make_unique<BusExecutor>( std::move( bus ), clock ) );
   return executors;
}

} // namespace Smbusd
