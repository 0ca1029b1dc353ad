#pragma once

#include "simulator/chips/Drift.h"
#include "simulator/chips/Inertia.h"
#include "simulator/chips/modules/Optics.h"

#include <array>

namespace Simulator {

// The inside of a pluggable module: a case with a temperature, a supply, lasers, and the light that
// arrives. Units: degrees Celsius, volts, milliamperes, milliwatts, dB.
class ModuleModel {
 public:
   static constexpr unsigned mostLanes = 8;

   // Warm, as after hours at full power. The seed decides how it drifts, and how its lanes differ.
   ModuleModel( const Bus::Clock &, const Optics &, uint64_t seed );

   const Optics &optics() const { return optics_; }

   // What the module makes of itself.
   void fullPowerIs( bool full ) { heat_.targetIs( full ? optics_.heat : optics_.heat / 4 ); }
   void unplugged() { heat_.valueIs( 0 ); } // it lay on the shelf
   void powerLost() { heat_.targetIs( 0 ); }
   bool isCooling() const { return heat_.target() == 0; }

   void ambientIs( double celsius ) { ambient_ = celsius; }
   void supplyIs( double volts ) { supply_ = volts; }
   // The share of a laser's efficiency that is gone, 0 to 1.
   void ageIs( unsigned lane, double age ) { lanes_[lane].age = age; }
   void arrivingIs( unsigned lane, double milliwatts ) { lanes_[lane].arriving = milliwatts; }
   void attenuationIs( unsigned lane, double decibels ) { lanes_[lane].attenuation = decibels; }

   double ambient() const { return ambient_; }
   double supply() const { return supply_; }
   double age( unsigned lane ) const { return lanes_[lane].age; }
   double attenuation( unsigned lane ) const { return lanes_[lane].attenuation; }

   double celsius() const;
   double volts() const;
   // A laser that is on, in a case of so many degrees. Its control holds the power as long as the
   // current that this takes is below its limit.
   struct Laser {
      double bias;
      double power;
   };
   Laser laser( unsigned lane, double celsius ) const;
   // What arrives without a fibre, and what is left of light after the connector.
   double arriving( unsigned lane ) const;
   double received( unsigned lane, double milliwatts ) const;

 private:
   struct Lane {
      double bias = 0; // of this laser when new, at 45 degrees
      double txPower = 0;
      double arriving = 0;
      double age = 0;
      double attenuation = 0;
      Drift txDrift{};
      Drift rxDrift{};
   };

   const Bus::Clock &clock_;
   const Optics optics_;
   double ambient_ = 30;
   double supply_;
   Inertia heat_;
   Drift celsiusDrift_;
   Drift voltsDrift_;
   std::array<Lane, mostLanes> lanes_;
};

// A power ratio, 1 for 0 dB.
double ratioOf( double decibels );

} // namespace Simulator
