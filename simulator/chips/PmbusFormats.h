#pragma once

#include <cstdint>

namespace Simulator {

// The number formats of PMBus (PMBus Power System Management Protocol, Part II, "Data formats").

// Mantissa in bits 10-0, exponent in bits 15-11, both two's complement. Rounds to the nearest
// number, with the smallest possible exponent. Values out of range become the nearest limit.
uint16_t toLinear11( double value );
double fromLinear11( uint16_t word );

// The mantissa of a voltage, unsigned, for VOUT_MODE's exponent.
uint16_t toLinear16( double volts, int exponent );

} // namespace Simulator
