#pragma once

#include "busses/RootBus.h"
#include "busses/Wire.h"

namespace Smbusd {

// A root bus made of simulated wires, which outlive it.
class SimulatedBus final : public RootBus {
 public:
   explicit SimulatedBus( const Wire &wire ) : wire_( wire ) {}
   // Two chips that answer are an error, though both have taken what was written.
   Outcome transfer( const Transfer & ) override;

 private:
   const Wire &wire_;
};

} // namespace Smbusd
