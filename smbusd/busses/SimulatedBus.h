#pragma once

#include "busses/RootBus.h"
#include "busses/Wire.h"

#include <chrono>
#include <mutex>

namespace Smbusd {

// A root bus made of simulated wires, which outlive it. A transfer holds the mutex, under which
// everything that touches the chips happens.
class SimulatedBus final : public RootBus {
 public:
   SimulatedBus( const Wire &wire, std::mutex &mutex ) : wire_( wire ), mutex_( mutex ) {}
   // Two chips that answer are an error, though both have taken what was written.
   Outcome transfer( const Transfer & ) override;

 private:
   Outcome carryOutOnce( const Transfer &, std::chrono::milliseconds &slow );

   const Wire &wire_;
   std::mutex &mutex_;
};

} // namespace Smbusd
