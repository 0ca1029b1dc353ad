#pragma once

#include "busses/RootBus.h"
#include "busses/Wire.h"

#include <functional>
#include <mutex>

namespace Smbusd {

// A root bus made of simulated wires, which outlive it. A transfer holds the mutex, under which
// everything that touches the chips happens.
class SimulatedBus final : public RootBus {
 public:
   // What became of a transfer, and what it took.
   struct Carried {
      Outcome outcome;
      const Chip *answering = nullptr; // who acknowledged it; null when nobody did
      unsigned bytes = 0;              // on the wires, addresses and packet error codes among them
   };
   // Called with the mutex held.
   using Report = std::function<void( const Transfer &, const Carried & )>;

   SimulatedBus( const Wire &wire, std::mutex &mutex, Report report = {} )
      : wire_( wire ), mutex_( mutex ), report_( std::move( report ) ) {}
   // Two chips that answer are an error, though both have taken what was written.
   Outcome transfer( const Transfer & ) override;

 private:
   Carried carryOutOnce( const Transfer & );

   const Wire &wire_;
   std::mutex &mutex_;
   const Report report_;
};

} // namespace Smbusd
