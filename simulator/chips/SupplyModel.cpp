#include "simulator/chips/SupplyModel.h"

namespace Simulator {

namespace {

constexpr double degreesAWatt = 0.12; // of loss, with the fans at full speed
constexpr std::chrono::seconds ofHeat( 20 );
constexpr std::chrono::milliseconds ofFan( 1200 );

} // namespace

SupplyModel::SupplyModel( const Bus::Clock &clock, const Rating &rating )
   : rating_( rating ),
     hotSpot_( clock, ofHeat ), fans_{ Inertia( clock, ofFan ), Inertia( clock, ofFan ) } {
   updateTargets();
   settle();
}

double SupplyModel::inputWatts() const {
   return line_ > 0 ? outputWatts() / rating_.efficiency + ownWatts : 0;
}

// The supply sets its fans by its load, 25 % at least. A host can only make them faster.
double SupplyModel::duty( unsigned fan ) const {
   const double own = 25 + 60 * outputAmperes() / rating_.maxAmperes;
   return std::min( std::max( own, duty_[fan] ), 100.0 );
}

// Half the speed cools half as well. Through stopped fans there is still a tenth of the air flow.
double SupplyModel::hotSpotTarget() const {
   double air = 0;
   double most = 0;
   for ( unsigned fan = 0; fan < fans_.size(); ++fan ) {
      air += fans_[fan].target();
      most += rating_.maxRpm[fan];
   }
   const double share = most > 0 ? std::max( air / most, 0.1 ) : 1;
   return inletCelsius() + ( inputWatts() - outputWatts() ) * degreesAWatt / share;
}

void SupplyModel::updateTargets() {
   for ( unsigned fan = 0; fan < fans_.size(); ++fan ) {
      if ( stalled_[fan] )
         fans_[fan].valueIs( 0 );
      else
         fans_[fan].targetIs( line_ > 0 && !cutOff_ ? rating_.maxRpm[fan] * duty( fan ) / 100 : 0 );
   }
   hotSpot_.targetIs( hotSpotTarget() );
}

void SupplyModel::settle() {
   for ( Inertia &fan : fans_ )
      fan.valueIs( fan.target() );
   hotSpot_.valueIs( hotSpot_.target() );
}

void SupplyModel::lineIs( double volts ) { line_ = volts, updateTargets(); }
void SupplyModel::loadIs( double amperes ) { load_ = amperes, updateTargets(); }
void SupplyModel::ambientIs( double celsius ) { ambient_ = celsius, updateTargets(); }
void SupplyModel::failedIs( bool failed ) { failed_ = failed, updateTargets(); }
void SupplyModel::enabledIs( bool enabled ) { enabled_ = enabled, updateTargets(); }
void SupplyModel::cutOffIs( bool cutOff ) { cutOff_ = cutOff, updateTargets(); }
void SupplyModel::fanStalledIs( unsigned fan, bool stalled ) {
   stalled_[fan] = stalled, updateTargets();
}
void SupplyModel::dutyIs( unsigned fan, double percent ) { duty_[fan] = percent, updateTargets(); }

} // namespace Simulator
