#include "simulator/bus/BusSegment.h"

namespace Simulator {

void BusSegment::findHearing( uint8_t address, std::vector<Chip *> &found ) const {
   for ( const Seat &seat : seats_ ) {
      if ( seat.address == address && seat.chip->answers() )
         found.push_back( seat.chip );
   }
   for ( const Joint &joint : joints_ ) {
      if ( joint.mux->answers() && joint.mux->joins( joint.channel ) )
         joint.behind->findHearing( address, found );
   }
}

const Chip *BusSegment::findStuck() const {
   for ( const Seat &seat : seats_ ) {
      if ( seat.chip->faults().stuck && seat.chip->answers() )
         return seat.chip;
   }
   for ( const Joint &joint : joints_ ) {
      if ( !joint.mux->answers() || !joint.mux->joins( joint.channel ) )
         continue;
      if ( const Chip *stuck = joint.behind->findStuck() )
         return stuck;
   }
   return nullptr;
}

} // namespace Simulator
