#include "host/session/AbsenceCheck.h"

namespace Host {

void AbsenceCheck::missed( size_t slot ) {
   if ( isAbsent( slot ) )
      return;
   ++slots_[slot].reads;
   ++slots_[slot].misses;
}

void AbsenceCheck::missedLater( size_t slot ) {
   ++slots_[slot].reads;
   slots_[slot].misses = 0;
}

void AbsenceCheck::failed( size_t slot ) {
   if ( !isAbsent( slot ) )
      slots_.erase( slot );
}

bool AbsenceCheck::isAbsent( size_t slot ) const {
   const auto known = slots_.find( slot );
   return known != slots_.end() && known->second.misses == readsInAll;
}

bool AbsenceCheck::wantsAnotherRead( size_t slot ) const {
   const auto known = slots_.find( slot );
   if ( known == slots_.end() || isAbsent( slot ) )
      return false;
   return known->second.reads % ( isOneRound_ ? readsInAll : readsInARound ) != 0;
}

} // namespace Host
