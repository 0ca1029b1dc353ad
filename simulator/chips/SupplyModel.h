#pragma once

#include "simulator/chips/Inertia.h"

#include <algorithm>
#include <array>

namespace Simulator {

// The inside of a power supply: a converter from mains to one output, two temperatures and two
// fans. Units: volts, amperes, watts, degrees Celsius, revolutions per minute.
class SupplyModel {
 public:
   struct Rating {
      double nominalVolts = 12;
      double maxAmperes = 70;
      double efficiency = 0.92;
      std::array<double, 2> maxRpm{}; // zero: there is no such fan
   };

   static constexpr double leastLine = 85;
   static constexpr double ownWatts = 8; // of the controller and the standby converter

   // Starts with final temperature and fan speeds. The clock outlives it.
   SupplyModel( const Bus::Clock &, const Rating & );

   void lineIs( double volts );
   void loadIs( double amperes );
   void ambientIs( double celsius );
   void failedIs( bool ); // the converter has no output although it is enabled
   void enabledIs( bool );
   void cutOffIs( bool ); // the whole board is off: no output, and the fans stop
   void fanStalledIs( unsigned fan, bool );
   void dutyIs( unsigned fan, double percent ); // requested; the supply may need more

   const Rating &rating() const { return rating_; }
   double line() const { return line_; }
   double load() const { return load_; }
   double ambient() const { return ambient_; }
   bool failed() const { return failed_; }
   bool enabled() const { return enabled_; }
   bool fanStalled( unsigned fan ) const { return stalled_[fan]; }

   bool lineGood() const { return line_ >= leastLine; }
   bool isOn() const { return enabled_ && lineGood() && !cutOff_; }
   bool delivers() const { return isOn() && !failed_; }
   double outputVolts() const { return delivers() ? rating_.nominalVolts - 0.002 * load_ : 0; }
   double outputAmperes() const { return delivers() ? load_ : 0; }
   double outputWatts() const { return outputVolts() * outputAmperes(); }
   double inputWatts() const; // including the supply's own consumption
   double inputAmperes() const { return line_ > 0 ? inputWatts() / line_ : 0; }
   double inletCelsius() const { return ambient_ + 1.5; } // slightly warmer than the room
   double hotSpotCelsius() const { return hotSpot_.value(); }
   double duty( unsigned fan ) const;
   double rpm( unsigned fan ) const { return fans_[fan].value(); }

   // Temperature and fans reach their targets at once.
   void settle();

 private:
   void updateTargets(); // of the fans and the temperature
   double hotSpotTarget() const;

   const Rating rating_;
   double line_ = 230;
   double load_ = 20;
   double ambient_ = 25;
   bool failed_ = false;
   bool enabled_ = true;
   bool cutOff_ = false;
   std::array<bool, 2> stalled_{};
   std::array<double, 2> duty_{};
   Inertia hotSpot_;
   std::array<Inertia, 2> fans_;
};

} // namespace Simulator
