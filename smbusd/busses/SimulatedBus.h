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
   // What became of a transfer, and the chip that acknowledged it, null when there was none. Called
   // with the mutex held.
   using Report = std::function<void( const Transfer &, const Outcome &, const Chip * )>;

   SimulatedBus( const Wire &wire, std::mutex &mutex, Report report = {} )
      : wire_( wire ), mutex_( mutex ), report_( std::move( report ) ) {}
   // Two chips that answer are an error, though both have taken what was written.
   Outcome transfer( const Transfer & ) override;

 private:
   Outcome carryOutOnce( const Transfer &, const Chip *&answering );

   const Wire &wire_;
   std::mutex &mutex_;
   const Report report_;
};

} // namespace Smbusd
