#pragma once

#include "simulator/bus/BusSegment.h"
#include "simulator/bus/Cycle.h"
#include "smbus/RootBus.h"

#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace Simulator {

// What another master sends or reads as plain bytes between a start and the next.
struct BusMessage {
   uint8_t address = 0;
   Direction direction = Direction::Write;
   std::string bytes; // to write, or in place of what is to be read
};

// A root bus made of simulated wires, which outlive it. A transfer holds the mutex, under which
// everything that touches the chips happens.
class SimulatedBus final : public Bus::RootBus {
 public:
   // What became of a transfer, and what it took.
   struct Result {
      Bus::Outcome outcome;
      const Chip *answering = nullptr; // who acknowledged it; null when nobody did
      unsigned bytes = 0;              // on the wires, addresses and packet error codes among them
   };
   // Called with the mutex held.
   using Observer = std::function<void( const Bus::Transfer &, const Result & )>;

   SimulatedBus( const BusSegment &segment, std::mutex &mutex, Observer observer = {} )
      : segment_( segment ), mutex_( mutex ), observer_( std::move( observer ) ) {}
   // Two chips that answer are an error, though both have taken what was written.
   Bus::Outcome transfer( const Bus::Transfer & ) override;
   // Messages from a start to the stop; what is read takes the place of the bytes. False when
   // something of it isn't acknowledged, or two chips answer.
   bool exchange( std::vector<BusMessage> & );

 private:
   static void exchange( Cycle &, BusMessage &, uint32_t &command, Result & );
   Result exchangeOnce( std::vector<BusMessage> &, uint32_t &command );
   Result executeOnce( const Bus::Transfer & );

   const BusSegment &segment_;
   std::mutex &mutex_;
   const Observer observer_;
};

} // namespace Simulator
