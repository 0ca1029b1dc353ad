// From the words at A2h to numbers, as the module is calibrated.
#pragma once

#include "optics/Monitors.h"

namespace Optics::Sff8472 {

struct Calibration {
   Conversion temperature, voltage, bias, txPower, rxPower;
};

// With external calibration the host applies the module's constants, to thresholds too. Constants
// that make no number are told as findings, and their conversion is empty.
Calibration calibrationOf( const Image &image, Module &module );

} // namespace Optics::Sff8472
