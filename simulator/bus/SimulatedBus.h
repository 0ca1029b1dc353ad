#pragma once

#include "simulator/bus/BusSegment.h"
#include "simulator/bus/Cycle.h"
#include "smbus/RootBus.h"

#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace Simulator {

// An I2C message: plain bytes from a start to the next start or stop.
struct BusMessage {
   uint8_t address = 0;
   Direction direction = Direction::Write;
   std::string bytes; // to write; or, of the right number, to be replaced by what is read
};

// A simulated root bus. Its segment outlives it. It uses the chips only while it holds the mutex.
class SimulatedBus final : public Bus::RootBus {
 public:
   // The result of a transfer.
   struct Result {
      Bus::Outcome outcome{ .bytes = 0 };
      const Chip *answering = nullptr; // the chip that acknowledged; null if none did
   };
   // Called while the mutex is held.
   using Observer = std::function<void( const Bus::Transfer &, const Result & )>;

   SimulatedBus( const BusSegment &segment, std::mutex &mutex, Observer observer = {} )
      : segment_( segment ), mutex_( mutex ), observer_( std::move( observer ) ) {}
   // If two chips answer, that is an error, although both got what was written.
   Bus::Outcome transfer( const Bus::Transfer & ) override;
   bool clearLines() override;
   bool resetMux( uint8_t address ) override;
   // Executes messages with repeated starts between them, and stores what is read. Returns false
   // when an acknowledge is missing or two chips answer.
   bool exchange( std::vector<BusMessage> & );

 private:
   static void exchange( Cycle &, BusMessage &, uint32_t &command, Result & );
   Result exchangeOnce( std::vector<BusMessage> &, uint32_t &command );
   Result executeOnce( const Bus::Transfer & );

   const BusSegment &segment_;
   std::mutex &mutex_;
   const Observer observer_;
   Cycle::Chips chips_;
};

} // namespace Simulator
