#pragma once

#include <cstdint>
#include <optional>

// The number formats of PMBus.
namespace Health::Pmbus {

// Mantissa in bits 10-0 and exponent in bits 15-11, both two's complement.
double linear11( uint16_t word );

// An unsigned mantissa, with the exponent that VOUT_MODE has in its bits 4-0. Nothing when bits 7-5
// of the mode say that it is not linear.
std::optional<double> ulinear16( uint16_t word, uint8_t voutMode );

} // namespace Health::Pmbus
