#pragma once

namespace Simulator {

// Where a monitor's flags are raised: above the high ones, below the low ones.
struct Limits {
   double highAlarm = 0;
   double lowAlarm = 0;
   double highWarning = 0;
   double lowWarning = 0;
};

// The optics of a kind of module. Units: milliamperes, milliwatts, degrees Celsius.
struct Optics {
   unsigned lanes = 0; // 0: copper, without monitors
   double bias = 0;    // of a new laser at 45 degrees
   double txPower = 0;
   double rxPower = 0; // that usually arrives
   Limits biasLimits{};
   Limits txLimits{};
   Limits rxLimits{};
   double heat = 0; // how much warmer than the air its case is, at full power
};

inline constexpr Limits moduleCelsiusLimits{ 75, -5, 70, 0 };
inline constexpr Limits moduleVoltsLimits{ 3.63, 2.97, 3.465, 3.135 };

} // namespace Simulator
