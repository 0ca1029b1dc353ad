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
   void join( PCA9548 &mux, unsigned channel, BusSegment &behind ) {
      branches_.push_back( { &mux, channel, &behind } );
   }

   // Adds every chip that hears this address now, here or behind a selected channel.
   void findReachable( uint8_t address, std::vector<Chip *> &found ) const;
   // A chip that holds the data line low, here or behind a selected channel; null if none does.
   const Chip *findStuck() const;
   // Nine clocks, here and behind the selected channels.
   void clock() const;
   // Pulls the reset pins of the multiplexers at this address that have one, wherever they are:
   // these pins are not on the bus. False: there is none.
   bool resetMuxes( uint8_t address ) const;

 private:
   void letGo( Stuck until ) const;

   struct Attachment {
      uint8_t address;
      Chip *chip;
   };
   struct Branch {
      PCA9548 *mux;
      unsigned channel;
      BusSegment *behind;
   };
   std::vector<Attachment> attachments_;
   std::vector<Branch> branches_;
};

} // namespace Simulator
