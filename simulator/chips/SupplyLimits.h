#pragma once

#include "simulator/chips/SupplyModel.h"

namespace Simulator {

// The limits of a supply, which it reports and never changes. Beyond a warning it sets a status
// bit, and so it does beyond a fault; it is off only below the fault limit of its line.
struct SupplyLimits {
   struct Pair {
      double warning, fault;
   };
   explicit SupplyLimits( const SupplyModel::Rating & );

   Pair lowOutputVolts, highOutputVolts;
   Pair amperes;
   Pair celsius{ 95, 110 };
   Pair lowLine{ 90, SupplyModel::leastLine };
   Pair highLine{ 264, 284 };
   double outputWatts; // warnings alone
   double inputWatts;
};

} // namespace Simulator
