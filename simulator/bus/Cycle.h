#pragma once

#include "simulator/bus/BusSegment.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace Simulator {

// An error on the bus ends the transfer; the text says which.
struct BusFault : std::runtime_error {
   using std::runtime_error::runtime_error;
};

// A master's bus cycle, from the start to the stop. The destructor is the stop. The lines are
// wired-AND: one acknowledge is enough, and when several chips send at once, the bus has the AND of
// their bytes.
class Cycle {
 public:
   // Lists of chips, whose memory is used again from cycle to cycle.
   struct Chips {
      std::vector<Chip *> reachable{}; // fixed: multiplexers switch only at the stop
      std::vector<Chip *> answering{};
   };

   // BusFault: the data line is held low.
   Cycle( const BusSegment &segment, uint8_t address, Chips & );
   ~Cycle();
   Cycle( const Cycle & ) = delete;
   Cycle &operator=( const Cycle & ) = delete;

   void start( Direction );  // the second one is a repeated start. BusFault: no acknowledge
   void command( uint32_t ); // BusFault: no acknowledge, or too wide for the chip's command
   bool write( uint8_t );    // returns the acknowledge
   uint8_t read();
   uint8_t pec() const { return pec_; }      // of all bytes so far
   unsigned bytes() const { return bytes_; } // so far, including addresses

   // The first chip that acknowledged the last start; null if none did.
   const Chip *answering() const;
   // The chips that answered together, for people; empty unless there were several.
   std::string collision() const;

 private:
   void count( uint8_t byte );

   const uint8_t address_;
   std::vector<Chip *> &reachable_;
   std::vector<Chip *> &answering_;
   uint8_t pec_ = 0;
   unsigned bytes_ = 0;
};

} // namespace Simulator
