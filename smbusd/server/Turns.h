// Who uses a root bus next. One transaction runs at a time. Among those that wait, the user who had
// the bus for the shortest time comes first, then the process of that user, then the earlier
// transaction. So a client waits for one transaction of a busy process, however many that process
// asks for.
#pragma once

#include "smbus/Clock.h"
#include "smbusd/Peer.h"

#include <condition_variable>
#include <cstddef>
#include <list>
#include <map>
#include <mutex>
#include <optional>

namespace Smbusd {

// Thread-safe. While nobody has to wait, a turn costs a lock and no memory.
class Turns {
 public:
   using Time = Bus::Clock::Time;

   explicit Turns( const Bus::Clock &clock ) : clock_( clock ) {}

   // Waits for the peer's turn, which then lasts until end(). False when there won't be one: the
   // peer has disconnected while it waited, or the turns are stopped. Throws std::system_error when
   // there is no descriptor to wait with.
   bool begin( const Peer &peer, Time now );
   void end();

   // When the present turn began.
   std::optional<Time> busySince() const;
   size_t waiting() const;

   // Nobody gets a turn any more. Turns that wait end at once.
   void stop();
   // Waits until the present turn has ended. False when it has not by then.
   bool idleBy( std::chrono::steady_clock::time_point end ) const;

 private:
   struct Waiter {
      Peer peer;
      int wake = -1; // an eventfd
      bool granted = false;
   };
   // How long the bus was used since the first of those that wait now came.
   struct User {
      Time used{ 0 };
      Time least{ 0 }; // of a process that comes now
      std::map<pid_t, Time> processes{};
   };

   bool waitFor( Waiter &waiter );
   void grantNext();
   void arrives( const Peer &peer );

   const Bus::Clock &clock_;
   mutable std::mutex mutex_;
   mutable std::condition_variable idle_;
   bool stopped_ = false;
   std::optional<Time> since_;
   Peer running_;
   std::list<Waiter *> waiting_; // in the order of their coming
   std::map<uid_t, User> users_; // empty while nobody waits
   Time least_{ 0 };             // of a user who comes now
};

} // namespace Smbusd
