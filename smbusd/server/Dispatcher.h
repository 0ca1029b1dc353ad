#pragma once

#include "TransactionRunner.h"

#include <boost/asio/thread_pool.hpp>

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>

namespace Smbusd {

// Who asked; a transaction that has not begun when its client goes is not carried out.
struct Client {
   std::atomic<bool> gone = false;
};

// Hands each transaction to its root bus, where a thread works them off one by one: a slow bus
// holds up no other.
class Dispatcher {
 public:
   using Answer = std::function<void( Smbus::TransactionResponse )>;

   // bound limits the time of every transaction. Clock and busses are for all threads.
   Dispatcher( Busses busses, const Clock &clock, std::chrono::milliseconds bound );
   // The transactions in hand are carried out to their end, those that wait are not begun.
   ~Dispatcher();

   // The answer is given in another thread, or at once when nothing is to be carried out.
   // A client that is gone gets none.
   void carryOut( const Smbus::TransactionRequest &, std::shared_ptr<const Client>, Answer );

 private:
   struct Worker {
      Worker( std::unique_ptr<RootBus> itsBus, const Clock &clock )
         : bus( std::move( itsBus ) ), runner( *bus, clock ) {}
      std::unique_ptr<RootBus> bus;
      TransactionRunner runner;
      std::optional<boost::asio::thread_pool> thread; // from the first transaction on
   };
   Worker &workerOf( const Transaction & );

   const std::chrono::milliseconds bound_;
   std::map<RootBusId, Worker> workers_;
};

} // namespace Smbusd
