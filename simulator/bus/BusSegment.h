#pragma once

#include "simulator/chips/PCA9548.h"

#include <cstdint>
#include <vector>

namespace Simulator {

// A segment of a bus: the chips on its two lines, and the segments that multiplexers can join to
// it. It owns none of them.
class BusSegment {
 public:
   void attach( uint8_t address, Chip &chip ) { attachments_.push_back( { address, &chip } ); }
   // The multiplexer sits on this wire as a chip, too.
   void join( const PCA9548 &mux, unsigned channel, const BusSegment &behind ) {
      branches_.push_back( { &mux, channel, &behind } );
   }

   // Every chip that now hears this address, through whatever is joined, is added.
   void findReachable( uint8_t address, std::vector<Chip *> &found ) const;
   // A chip that holds down this segment, or one that is now joined to it; null when there is none.
   const Chip *findStuck() const;

 private:
   struct Attachment {
      uint8_t address;
      Chip *chip;
   };
   struct Branch {
      const PCA9548 *mux;
      unsigned channel;
      const BusSegment *behind;
   };
   std::vector<Attachment> attachments_;
   std::vector<Branch> branches_;
};

} // namespace Simulator
