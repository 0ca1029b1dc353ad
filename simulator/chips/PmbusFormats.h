#pragma once

#include <cstdint>

namespace Simulator {

// The number formats of PMBus (PMBus Power System Management Protocol, Part II, "Data formats").

// Mantissa in bits 10-0, exponent in 15-11, both two's complement: the nearest to the value that
// the format holds, with the smallest exponent that leaves room for it. Beyond the ends it stops.
uint16_t toLinear11( double value );
double fromLinear11( uint16_t word );

// The mantissa of a voltage, unsigned, for VOUT_MODE's exponent.
uint16_t toLinear16( double volts, int exponent );

} // namespace Simulator
