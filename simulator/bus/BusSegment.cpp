#include "simulator/bus/BusSegment.h"

#include <algorithm>

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
      if ( attachment.chip->faults().stuck != Stuck::No && attachment.chip->answers() )
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

void BusSegment::letGo( Stuck until ) const {
   for ( const Attachment &attachment : attachments_ )
      if ( attachment.chip->faults().stuck == until )
         attachment.chip->letsGo();
}

void BusSegment::clock() const {
   letGo( Stuck::UntilClocks );
   for ( const Branch &branch : branches_ )
      if ( branch.mux->answers() && branch.mux->selects( branch.channel ) )
         branch.behind->clock();
}

bool BusSegment::resetMuxes( uint8_t address ) const {
   const auto isIt = [&]( const Branch &branch ) {
      return branch.mux->hasResetPin() &&
             std::any_of( attachments_.begin(), attachments_.end(), [&]( const Attachment &one ) {
                return one.address == address && one.chip == branch.mux;
             } );
   };
   bool any = false;
   for ( const Branch &branch : branches_ ) {
      if ( isIt( branch ) ) {
         branch.mux->reset();
         branch.behind->letGo( Stuck::UntilReset );
         any = true;
      }
      any |= branch.behind->resetMuxes( address );
   }
   return any;
}

} // namespace Simulator
