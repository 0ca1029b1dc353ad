#pragma once

#include "smbus/Clock.h"
#include "smbusd/server/Executor.h"

#include <boost/asio/thread_pool.hpp>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>

namespace Smbusd {

// The client of a transaction. When it has gone, a transaction that has not started is dropped.
struct Client {
   std::atomic<bool> gone = false;
};

// Gives each transaction to the thread of its root bus, which carries them out one by one. So a
// slow bus doesn't delay the others. When a transaction takes more than twice the bound, the bus is
// stuck; further ones are refused until that one ends.
class Dispatcher {
 public:
   using Answer = std::function<void( Smbus::TransactionResponse )>;
   // A transaction, its answer, when it started and how long it took.
   using Observer =
      std::function<void( const Smbus::TransactionRequest &, const Smbus::TransactionResponse &,
                          Bus::Clock::Time begun, Bus::Clock::Time took )>;

   // No transaction may take longer than bound. Clock and busses are thread-safe. The observer is
   // called in the threads of the busses, or in the caller's thread for refused transactions.
   Dispatcher( Executors, const Bus::Clock &, std::chrono::milliseconds bound,
               Observer observer = {} );
   Dispatcher( Bus::Busses busses, const Bus::Clock &clock, std::chrono::milliseconds bound )
      : Dispatcher( executorsOn( std::move( busses ), clock ), clock, bound ) {}
   // Finishes the running transactions and drops the waiting ones.
   ~Dispatcher();

   // Calls back with the answer: in another thread, or at once if the transaction is refused or
   // empty. A client that has gone gets no answer.
   void dispatch( const Smbus::TransactionRequest &, std::shared_ptr<const Client>, Answer );

   // Starts no more transactions and waits for the running ones. Returns false if that takes longer
   // than patience; then only the end of the process can end them.
   bool stop( std::chrono::milliseconds patience );

 private:
   struct Worker {
      std::unique_ptr<Executor> executor;
      std::optional<Bus::Clock::Time> busySince;      // guarded by mutex_
      std::optional<boost::asio::thread_pool> thread; // created for the first transaction
   };
   Worker &workerOf( const Bus::Transaction & );
   void run( Worker &, const Bus::Transaction &, const Smbus::TransactionRequest &,
             const Answer & );
   bool stopped();
   void busyIs( Worker &, std::optional<Bus::Clock::Time> since );

   const Bus::Clock &clock_;
   const std::chrono::milliseconds bound_;
   const Observer observer_;
   std::map<Bus::RootBusId, Worker> workers_;
   std::mutex mutex_;
   std::condition_variable idle_;
   unsigned busy_ = 0; // workers
   bool stopped_ = false;
};

} // namespace Smbusd
