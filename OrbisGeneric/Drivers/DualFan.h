// A fan module with two rotors in series. Each rotor is a fan of another driver. Both get the same
// speed, the module reports their mean, and it is faulty when they differ for too long.
#pragma once

#include "OrbisGeneric/Components/Device.h"
#include "OrbisGeneric/Components/Fan.h"

namespace Drivers {

// Its sub-devices are "inlet" and "outlet".
class DualFan : public Component::MultiDevice {
 public:
   class Fan;

   static Component::MultiDevice *create( const DriverArgs &args, Ham::Ham *ham );
   // "fanId" (1 to 5), "maxRpm", "maxDiff" (allowed difference from the mean, as a fraction).
   Component::LogicalDevice::Fan *newFan( const DriverArgs &args ) override;

   // Ignores nine faulty readings in a row. From the tenth on it returns 2 and *rpm is unchanged.
   pl_status getFanRpm( Fan *fan, int *rpm );
   // Sets the inlet first. When that fails, the outlet is not set.
   pl_status setFanRpm( Fan *fan, int rpm );
};

class DualFan::Fan : public Component::LogicalDevice::Fan {
 public:
   Fan( DualFan *dualFan, uint8_t id, int32_t maxRpm, float allowedDifference,
        Component::LogicalDevice::Fan *inlet, Component::LogicalDevice::Fan *outlet )
      : dualFan_( dualFan ), id_( id ), maxRpm_( maxRpm ), maxDiff( allowedDifference ),
        inlet_( inlet ), outlet_( outlet ) {}

   pl_status getRpm( int *rpm ) override { return dualFan_->getFanRpm( this, rpm ); }
   pl_status setRpm( int rpm ) override { return dualFan_->setFanRpm( this, rpm ); }
   pl_status getInletRpm( int *rpm ) { return inlet_->getRpm( rpm ); }
   pl_status getOutletRpm( int *rpm ) { return outlet_->getRpm( rpm ); }
   pl_status setInletRpm( int rpm ) { return inlet_->setRpm( rpm ); }
   pl_status setOutletRpm( int rpm ) { return outlet_->setRpm( rpm ); }

   DualFan *dualFan_;
   uint8_t id_; // from 0
   int32_t maxRpm_;
   float maxDiff;
   Component::LogicalDevice::Fan *inlet_;
   Component::LogicalDevice::Fan *outlet_;
   uint8_t faults_ = 0; // in a row
};

} // namespace Drivers
