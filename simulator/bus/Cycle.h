#pragma once

#include "simulator/bus/BusSegment.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace Simulator {

// What ends a transfer early; the text says what was seen on the wires.
struct BusFault : std::runtime_error {
   using std::runtime_error::runtime_error;
};

// What a master does on simulated wires between a start and its stop, which comes with the end of
// the object. Lines are wired-and: one acknowledge is enough, and chips that speak at once give
// the bits that all of them give.
class Cycle {
 public:
   Cycle( const BusSegment &segment, uint8_t address ); // BusFault: the wires are held down
   ~Cycle();
   Cycle( const Cycle & ) = delete;
   Cycle &operator=( const Cycle & ) = delete;

   void start( Direction ); // again: a repeated start. BusFault when nobody acknowledges
   void
      command( uint32_t ); // BusFault when it isn't acknowledged or doesn't fit the chip's command
   bool write( uint8_t );  // the acknowledge
   uint8_t read();
   uint8_t pec() const { return pec_; }      // over everything so far
   unsigned bytes() const { return bytes_; } // that have passed, addresses among them

   // The first chip of those that answered the last start; null when there was none.
   const Chip *answering() const;
   // Which chips answered together; empty when there were not several.
   std::string collision() const;

 private:
   void count( uint8_t byte );

   const uint8_t address_;
   std::vector<Chip *> reachable_; // fixed: what a multiplexer joins changes at the stop
   std::vector<Chip *> answering_;
   uint8_t pec_ = 0;
   unsigned bytes_ = 0;
};

} // namespace Simulator
