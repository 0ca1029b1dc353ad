// Monitors, thresholds and flags, as far as they are alike in the three standards.
#pragma once

#include "optics/Half.h"

#include <functional>

namespace Optics {

// From a word of the memory to a number in the monitor's unit; nothing if there is none. Empty if
// there is none for any word.
using Conversion = std::function<std::optional<double>( uint16_t )>;

Conversion unsignedCounts( double perUnit );
Conversion signedCounts( double perUnit );
// The same in all three standards: 1/256 degree, 100 uV, 0.1 uW; 2 uA times `scale`.
Conversion celsius();
Conversion volts();
Conversion milliwatts();
Conversion milliamperes( unsigned scale = 1 );

std::optional<double> valueAt( const Half &half, unsigned place, const Conversion &conversion );

// Four words that are all 0, or all FFFFh, are no thresholds: the maker has not set them.
bool hasThresholds( const Half &half, unsigned first );
// High alarm, low alarm, high warning, low warning stand in this order in all three.
Thresholds thresholdsAt( const Half &half, unsigned first, const Conversion &conversion );

struct BitPlace {
   unsigned byte, bit;
};
struct FlagPlaces {
   BitPlace highAlarm, lowAlarm, highWarning, lowWarning;
};
ThresholdFlags flagsAt( const Half &half, const FlagPlaces &places );

Monitor monitorOf( Quantity quantity, unsigned lane = 0 );

} // namespace Optics
