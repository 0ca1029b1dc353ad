#include "simulator/chips/SupplyLimits.h"

#include "simulator/chips/PmbusFormats.h"

namespace Simulator {

namespace {

// As the command that reports it rounds it.
double rounded( double value ) { return fromLinear11( toLinear11( value ) ); }

} // namespace

SupplyLimits::SupplyLimits( const SupplyModel::Rating &rating )
   : lowOutputVolts{ 0.95 * rating.nominalVolts, 0.9 * rating.nominalVolts },
     highOutputVolts{ 1.05 * rating.nominalVolts, 1.1 * rating.nominalVolts },
     amperes{ rounded( rating.maxAmperes ), rounded( 1.2 * rating.maxAmperes ) },
     outputWatts( rounded( 1.05 * rating.nominalVolts * rating.maxAmperes ) ),
     inputWatts( rounded( outputWatts / rating.efficiency + SupplyModel::ownWatts ) ) {}

} // namespace Simulator
