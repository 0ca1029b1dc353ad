#pragma once

#include "simulator/chips/PCA9548.h"

#include <cstdint>
#include <vector>

namespace Simulator {

// A segment of a bus: its chips, and the segments behind its multiplexers. It owns none of them.
class BusSegment {
 public:
   void attach( uint8_t address, Chip &chip ) { attachments_.push_back( { address, &chip } ); }
   // The multiplexer is also attached to this segment as a chip.
   void join( const PCA9548 &mux, unsigned channel, const BusSegment &behind ) {
      branches_.push_back( { &mux, channel, &behind } );
   }

   // Adds every chip that hears this address now, here or behind a selected channel.
   void findReachable( uint8_t address, std::vector<Chip *> &found ) const;
   // A chip that holds the data line low, here or behind a selected channel; null if none does.
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
