#pragma once

#include "smbus/Clock.h"
#include "smbusd/Peer.h"
#include "smbusd/lease/SafeWrite.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Smbusd {

// A dead man's switch. Whoever controls the board renews the lease, and leaves the writes that
// bring it into a safe state. When the lease is over, they are carried out, each once a second
// until it is acknowledged. A renewal ends that, and is told that it happened. It knows of
// registers only what the client says. Thread-safe.
class Lease {
 public:
   using Time = Bus::Clock::Time;
   // Carries out one write, and returns why it failed; nothing: it was acknowledged.
   using CarryOut = std::function<std::string( const SafeWrite & )>;

   static constexpr Time longest = std::chrono::hours( 1 );
   static constexpr Time pause = std::chrono::seconds( 1 ); // between two tries

   // The clock outlives it.
   Lease( const Bus::Clock &clock, CarryOut carryOut )
      : clock_( clock ), carryOut_( std::move( carryOut ) ) {}

   // Takes the lease, or renews it. While a write is being carried out it waits for the end of that
   // one, so that none comes behind the renewal. Throws LeaseError.
   SmbusControl::LeaseState take( const SmbusControl::Lease &lease, const Peer &peer );
   SmbusControl::LeaseState state() const;

   // Carries out what is due now. Returns when to call it again; nothing: after the next take().
   std::optional<Time> work();
   // Works when it is due, until stop().
   void run();
   void stop();

 private:
   struct Held {
      std::vector<SafeWrite> writes{};
      std::vector<bool> done{};
      Time until{ 0 };
      pid_t process = 0;
      bool ran = false;
      std::optional<Time> nextTry{};
      std::string error{};
   };
   SmbusControl::LeaseState describe( bool ran ) const;
   std::optional<Time> due() const;

   const Bus::Clock &clock_;
   const CarryOut carryOut_;
   mutable std::mutex mutex_;
   std::mutex carrying_; // before the other one
   std::condition_variable changed_;
   bool stopped_ = false;
   std::optional<Held> held_{};
};

} // namespace Smbusd
