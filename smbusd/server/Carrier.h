// What carries out the transactions of one root bus, one after another.
#pragma once

#include "OrbisUtil/Smbus.pb.h"
#include "TransactionRunner.h"
#include "Transfer.h"
#include "busses/RootBus.h"

#include <map>
#include <memory>

namespace Smbusd {

class Carrier {
 public:
   virtual ~Carrier() = default;
   // Called from the one thread that works this bus.
   virtual Smbus::TransactionResponse run( const Transaction & ) = 0;
};

using Carriers = std::map<RootBusId, std::unique_ptr<Carrier>>;

// Carries them out on a bus of its own, transfer by transfer.
class BusCarrier final : public Carrier {
 public:
   BusCarrier( std::unique_ptr<RootBus> bus, const Clock &clock )
      : bus_( std::move( bus ) ), runner_( *bus_, clock ) {}
   Smbus::TransactionResponse run( const Transaction &transaction ) override {
      return runner_.run( transaction );
   }

 private:
   const std::unique_ptr<RootBus> bus_;
   TransactionRunner runner_;
};

inline Carriers carriersOn( Busses busses, const Clock &clock ) {
   Carriers carriers;
   for ( auto &[id, bus] : busses )
      carriers.emplace( id, std::make_unique<BusCarrier>( std::move( bus ), clock ) );
   return carriers;
}

} // namespace Smbusd
