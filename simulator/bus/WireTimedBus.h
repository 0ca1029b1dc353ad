#pragma once

#include "smbus/RootBus.h"

#include <cstdint>
#include <memory>

namespace Simulator {

// A simulated bus on which each transfer takes as long as its bits do at the clock of the wires.
class WireTimedBus final : public Bus::RootBus {
 public:
   WireTimedBus( std::unique_ptr<Bus::RootBus> bus, uint32_t clock )
      : bus_( std::move( bus ) ), clock_( clock ) {}

   Bus::Outcome transfer( const Bus::Transfer & ) override;
   bool clearLines() override { return bus_->clearLines(); }
   bool resetMux( uint8_t address ) override { return bus_->resetMux( address ); }

 private:
   const std::unique_ptr<Bus::RootBus> bus_;
   const uint32_t clock_; // Hz
};

// All of these busses; those without a clock have the usual one. Not for I/O ports: they have no
// wires.
Bus::Busses wireTimed( Bus::Busses busses, const std::map<Bus::RootBusId, uint32_t> &clocks );

} // namespace Simulator
