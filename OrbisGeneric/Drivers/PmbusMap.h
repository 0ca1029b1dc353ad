// The PMBus commands that the drivers use, and the linear data formats. Source: PMBus Power System
// Management Protocol, Part II - Command Language, Revision 1.2: command summary (appendix I),
// STATUS_WORD (17.2), "Linear Data Format" (7.1), VOUT_MODE (8.3).
#pragma once

#include <cstdint>

namespace Drivers::PmbusMap {

constexpr uint8_t VOUT_MODE = 0x20;
constexpr uint8_t FAN_COMMAND_1 = 0x3B;
constexpr uint8_t FAN_COMMAND_2 = 0x3C;
constexpr uint8_t STATUS_WORD = 0x79;
constexpr uint8_t READ_VIN = 0x88;
constexpr uint8_t READ_IIN = 0x89;
constexpr uint8_t READ_VOUT = 0x8B;
constexpr uint8_t READ_IOUT = 0x8C;
constexpr uint8_t READ_TEMPERATURE_1 = 0x8D;
constexpr uint8_t READ_TEMPERATURE_2 = 0x8E;
constexpr uint8_t READ_FAN_SPEED_1 = 0x90;
constexpr uint8_t READ_FAN_SPEED_2 = 0x91;
constexpr uint8_t READ_POUT = 0x96;
constexpr uint8_t READ_PIN = 0x97;
constexpr uint8_t MFR_MODEL = 0x9A;
constexpr uint8_t MFR_SERIAL = 0x9E;

// Bits of STATUS_WORD.
constexpr uint16_t OFF = 1 << 6;
constexpr uint16_t POWER_GOOD_N = 1 << 11; // set: power is not good

// LINEAR11: the exponent is bits 15-11, the mantissa bits 10-0. Both are two's complement.
constexpr unsigned linear11MantissaBits = 11;
constexpr unsigned linear11ExponentBits = 5;
constexpr uint16_t linear11Mantissa( uint16_t word ) { return word & 0x7FF; }
constexpr uint8_t linear11Exponent( uint16_t word ) { return static_cast<uint8_t>( word >> 11 ); }

static_assert( linear11Mantissa( 0xD3C0 ) == 960 && linear11Exponent( 0xD3C0 ) == 0x1A ); // 2^-6

} // namespace Drivers::PmbusMap
