#pragma once

#include "smbus/Clock.h"
#include "smbusd/accounts/Report.h"
#include "smbusd/server/Executor.h"
#include "smbusd/server/Gate.h"
#include "smbusd/server/Turns.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace Smbusd {

// Carries out transactions in the threads of their clients, one at a time on a root bus. So a slow
// bus doesn't delay the others, and a transaction crosses no thread. When one takes more than twice
// the bound, the bus is stuck; further ones are refused until that one ends. Thread-safe.
class Dispatcher {
 public:
   // A transaction, its answer, when it started and how long it took.
   using Observer =
      std::function<void( const Smbus::TransactionRequest &, const Smbus::TransactionResponse &,
                          Bus::Clock::Time begun, Bus::Clock::Time took )>;

   // No transaction may take longer than bound. Clock and busses are thread-safe. The observer is
   // called in the threads of the clients.
   Dispatcher( Executors, const Bus::Clock &, std::chrono::milliseconds bound,
               Observer observer = {} );
   Dispatcher( Bus::Busses busses, const Bus::Clock &clock, std::chrono::milliseconds bound )
      : Dispatcher( executorsOn( std::move( busses ), clock ), clock, bound ) {}

   // What a client asks for, and its answer. Used again, it needs no memory for what is like
   // before.
   struct Exchange {
      Smbus::TransactionRequest request{};
      Bus::Transaction transaction{}; // of the request
      Smbus::TransactionResponse response{};
   };

   // Puts the next request into the exchange, and returns whether there is one. Its bus is the
   // same.
   using Next = std::function<bool( Exchange & )>;

   // Carries out the request and fills the response. What the gate refuses is not carried out;
   // without one all is. Where there is a next request, it follows in the same turn, so that
   // nothing else passes between them. False when the peer disconnects before its turn, or after
   // stop().
   bool carryOut( Exchange &, const Peer &, const Gate *gate = nullptr, const Next &next = {} );

   // Starts no more transactions and waits for the running ones. Returns false if that takes longer
   // than patience; then only the end of the process can end them.
   bool stop( std::chrono::milliseconds patience );

   // Of the busses that have one.
   std::vector<KnownBus> accounts() const;

   // Transactions that wait for their turn on the bus.
   size_t waiting( const Bus::RootBusId &bus ) const { return busses_.at( bus ).turns.waiting(); }

 private:
   struct Root {
      Root( std::unique_ptr<Executor> onIt, const Bus::Clock &clock )
         : executor( std::move( onIt ) ), turns( clock ) {}
      const std::unique_ptr<Executor> executor;
      Turns turns;
   };
   Root &rootOf( const Bus::Transaction & );
   bool runInTurn( Exchange &, const Peer &, const Next &next );
   void run( Root &, Exchange &, const Peer &, Bus::Clock::Time arrived );

   const Bus::Clock &clock_;
   const std::chrono::milliseconds bound_;
   const Observer observer_;
   std::map<Bus::RootBusId, Root> busses_;
};

} // namespace Smbusd
