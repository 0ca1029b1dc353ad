#pragma once

#include "simulator/chips/PCA9548.h"

#include <cstdint>
#include <vector>

namespace Simulator {

// A segment of a bus: the chips on its two lines, and the segments that multiplexers can join to
// it. It owns none of them.
class BusSegment {
 public:
   void attach( uint8_t address, Chip &chip ) { seats_.push_back( { address, &chip } ); }
   // The multiplexer sits on this wire as a chip, too.
   void join( const PCA9548 &mux, unsigned channel, const BusSegment &behind ) {
      joints_.push_back( { &mux, channel, &behind } );
   }

   // Every chip that now hears this address, through whatever is joined, is added.
   void findHearing( uint8_t address, std::vector<Chip *> &found ) const;
   // A chip that holds down this wire, or one that is now joined to it; null when there is none.
   const Chip *findStuck() const;

 private:
   struct Seat {
      uint8_t address;
      Chip *chip;
   };
   struct Joint {
      const PCA9548 *mux;
      unsigned channel;
      const BusSegment *behind;
   };
   std::vector<Seat> seats_;
   std::vector<Joint> joints_;
};

} // namespace Simulator
