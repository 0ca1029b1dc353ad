#include "simulator/chips/modules/CmisStates.h"

#include <algorithm>
#include <utility>

namespace Simulator {

CmisStates::CmisStates() { lanes_.fill( { Activated, {} } ); }

void CmisStates::startsAt( Time start ) {
   lastChange_ = start + management;
   module_ = { LowPower, lastChange_ };
   lanes_.fill( { Deactivated, lastChange_ } );
   wishes_ = {};
   anew_ = 0;
   moduleChanged_ = true;
   lanesChanged_ = 0;
}

void CmisStates::wishesAre( const Wishes &wishes, Time now ) {
   advance( now );
   wishes_ = wishes;
   lastChange_ = std::max( lastChange_, now );
   advance( now );
}

void CmisStates::initializeAnew( uint8_t which, Time now ) {
   advance( now );
   for ( unsigned number = 0; number < lanes; ++number )
      if ( lane( number ) != Deactivated )
         anew_ |= static_cast<uint8_t>( which & 1u << number );
   lastChange_ = std::max( lastChange_, now );
   advance( now );
}

bool CmisStates::takeModuleChanged() { return std::exchange( moduleChanged_, false ); }
uint8_t CmisStates::takeLanesChanged() { return std::exchange( lanesChanged_, uint8_t{ 0 } ); }

// A module goes down only when its data paths have.
std::optional<CmisStates::Step> CmisStates::nextOfModule() const {
   switch ( module() ) {
   case LowPower:
      if ( !wishes_.lowPower )
         return Step{ lastChange_, PoweringUp };
      break;
   case PoweringUp:
      return Step{ module_.since + poweringUp, Ready };
   case Ready:
      if ( wishes_.lowPower &&
           std::all_of( lanes_.begin(), lanes_.end(),
                        []( const Machine &each ) { return each.state == Deactivated; } ) )
         return Step{ lastChange_, PoweringDown };
      break;
   case PoweringDown:
      return Step{ module_.since + poweringDown, LowPower };
   }
   return {};
}

std::optional<CmisStates::Step> CmisStates::nextOfLane( unsigned number ) const {
   const bool wanted = module() == Ready && !wishes_.lowPower && wishes_.used >> number & 1 &&
                       !( anew_ >> number & 1 );
   const bool light = wanted && wishes_.light >> number & 1;
   const Machine &machine = lanes_[number];
   switch ( lane( number ) ) {
   case Deactivated:
      if ( wanted )
         return Step{ lastChange_, Initializing };
      break;
   case Initializing:
      return Step{ machine.since + initializing, Initialized };
   case Initialized:
      if ( !wanted )
         return Step{ lastChange_, Deinitializing };
      if ( light )
         return Step{ lastChange_, TurningOn };
      break;
   case TurningOn:
      return Step{ machine.since + turningOn, Activated };
   case Activated:
      if ( !light )
         return Step{ lastChange_, TurningOff };
      break;
   case TurningOff:
      return Step{ machine.since + turningOff, Initialized };
   case Deinitializing:
      return Step{ machine.since + deinitializing, Deactivated };
   }
   return {};
}

void CmisStates::change( Machine &machine, const Step &step ) {
   machine = { step.state, step.at };
   lastChange_ = std::max( lastChange_, step.at );
}

bool CmisStates::takeStep( Time now ) {
   std::optional<Step> first = nextOfModule();
   unsigned whose = lanes; // the module's
   for ( unsigned number = 0; number < lanes; ++number ) {
      const auto step = nextOfLane( number );
      if ( step && ( !first || step->at < first->at ) ) {
         first = step;
         whose = number;
      }
   }
   if ( !first || first->at > now )
      return false;
   if ( whose == lanes ) {
      change( module_, *first );
      moduleChanged_ |= first->state == Ready || first->state == LowPower;
   } else {
      const auto bit = static_cast<uint8_t>( 1u << whose );
      change( lanes_[whose], *first );
      if ( first->state == Deactivated )
         anew_ &= static_cast<uint8_t>( ~bit );
      if ( first->state == Deactivated || first->state == Initialized || first->state == Activated )
         lanesChanged_ |= bit;
   }
   return true;
}

void CmisStates::advance( Time now ) {
   while ( takeStep( now ) ) {
   }
}

} // namespace Simulator
