// EMC2305 fan controller: five channels, each with a fan drive and a tachometer.
#pragma once

#include "OrbisGeneric/Components/Device.h"
#include "OrbisGeneric/Components/Fan.h"

namespace Drivers {

class EMC2305 : public Component::HardwareDevice {
 public:
   class Fan;

   static Component::HardwareDevice *create( const DriverArgs &args, Ham::Ham *ham );
   // "fanId" (1 to 5), "maxRpm" (the speed at full drive), "registerOffset" (channel, 0 to 4).
   Component::LogicalDevice::Fan *newFan( const DriverArgs &args ) override;

   // A count of 0 means that the fan does not turn or is missing: returns 2 and an rpm of 0.
   pl_status getFanRpm( Fan *fan, int *rpm );
   // No limit: for a speed above the maximum the drive value wraps modulo 256.
   pl_status setFanRpm( Fan *fan, int rpm );
};

class EMC2305::Fan : public Component::LogicalDevice::Fan {
 public:
   // Reads the tach multiplier from the chip, once. It is 1 when the read fails.
   Fan( EMC2305 *emc2305, uint8_t id, uint32_t maxRpm,
        std::map<std::string, std::string> driverArgs );

   pl_status getRpm( int *rpm ) override { return emc2305_->getFanRpm( this, rpm ); }
   pl_status setRpm( int rpm ) override { return emc2305_->setFanRpm( this, rpm ); }

   EMC2305 *emc2305_;
   uint8_t id_; // from 0
   uint32_t maxRpm_;
   uint8_t fanSetting_;
   uint8_t fanConfig1_;
   uint8_t tachLow_;
   uint8_t tachHigh_;
   uint8_t tachMultiplier_ = 1;
};

} // namespace Drivers
