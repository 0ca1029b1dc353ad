#include "host/session/PendingActions.h"

#include <algorithm>

namespace Host {

void PendingActions::add( size_t object, const Action &action, Answer answer ) {
   all_.push_back( { object, action, std::move( answer ) } );
}

std::optional<Command>
PendingActions::next( const std::function<bool( size_t object )> &can ) const {
   for ( const Pending &pending : all_ )
      if ( can( pending.object ) )
         return ActCommand{ pending.object, pending.action };
   return {};
}

void PendingActions::answer( size_t object, const Reading &reading ) {
   const auto first = std::find_if( all_.begin(), all_.end(), [object]( const Pending &pending ) {
      return pending.object == object;
   } );
   if ( first == all_.end() )
      return;
   const Answer answer = std::move( first->answer ); // it may add another action
   all_.erase( first );
   if ( answer )
      answer( reading );
}

void PendingActions::refuse( size_t object, const Fault &fault ) {
   const auto count = std::count_if( all_.begin(), all_.end(), [object]( const Pending &pending ) {
      return pending.object == object;
   } );
   for ( auto i = count; i > 0; --i )
      answer( object, { .state = State::Unreadable, .fault = fault } );
}

} // namespace Host
