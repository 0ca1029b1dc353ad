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

// Who asked; a transaction that has not begun when its client goes is not carried out.
struct Client {
   std::atomic<bool> gone = false;
};

// Hands each transaction to its root bus, where a thread works them off one by one: a slow bus
// holds up no other. Where one has been in hand for twice its bound, the bus is stuck, and further
// ones are refused until it ends.
class Dispatcher {
 public:
   using Answer = std::function<void( Smbus::TransactionResponse )>;
   // A transaction with its answer, when it began and how long it took.
   using Observer =
      std::function<void( const Smbus::TransactionRequest &, const Smbus::TransactionResponse &,
                          Bus::Clock::Time begun, Bus::Clock::Time took )>;

   // bound limits the time of every transaction. Clock and busses are for all threads. The observer
   // is called in the threads of the busses, and in the caller's for what is refused.
   Dispatcher( Executors, const Bus::Clock &, std::chrono::milliseconds bound,
               Observer observer = {} );
   Dispatcher( Bus::Busses busses, const Bus::Clock &clock, std::chrono::milliseconds bound )
      : Dispatcher( executorsOn( std::move( busses ), clock ), clock, bound ) {}
   // The transactions in hand are carried out to their end, those that wait are not begun.
   ~Dispatcher();

   // The answer is given in another thread, or at once when nothing is to be carried out.
   // A client that is gone gets none.
   void dispatch( const Smbus::TransactionRequest &, std::shared_ptr<const Client>, Answer );

   // Begins nothing more and waits for what is in hand; false when that takes longer. Then only the
   // process's end can end it.
   bool stop( std::chrono::milliseconds patience );

 private:
   struct Worker {
      std::unique_ptr<Executor> executor;
      std::optional<Bus::Clock::Time> busySince;      // guarded by mutex_
      std::optional<boost::asio::thread_pool> thread; // from the first transaction on
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
