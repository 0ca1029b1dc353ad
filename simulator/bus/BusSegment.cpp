#include "simulator/bus/BusSegment.h"

namespace Simulator {

void BusSegment::findReachable( uint8_t address, std::vector<Chip *> &found ) const {
   for ( const Attachment &attachment : attachments_ ) {
      if ( attachment.address == address && attachment.chip->answers() )
         found.push_back( attachment.chip );
   }
   for ( const Branch &branch : branches_ ) {
      if ( branch.mux->answers() && branch.mux->selects( branch.channel ) )
         branch.behind->findReachable( address, found );
   }
}

const Chip *BusSegment::findStuck() const {
   for ( const Attachment &attachment : attachments_ ) {
      if ( attachment.chip->faults().stuck && attachment.chip->answers() )
         return attachment.chip;
   }
   for ( const Branch &branch : branches_ ) {
      if ( !branch.mux->answers() || !branch.mux->selects( branch.channel ) )
         continue;
      if ( const Chip *stuck = branch.behind->findStuck() )
         return stuck;
   }
   return nullptr;
}

} // namespace Simulator
