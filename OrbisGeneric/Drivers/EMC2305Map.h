// EMC2305 registers of one fan channel, 0 to 4. Source: Microchip EMC2301/2/3/5 data sheet
// DS20006532A, register table, "Fan Configuration 1" and "TACH Reading Registers" (equation 4-3).
#pragma once

#include <cstdint>

namespace Drivers::EMC2305Map {

constexpr unsigned base( unsigned channel ) { return 0x10 * channel; }
constexpr unsigned fanSetting( unsigned channel ) { return base( channel ) + 0x30; } // drive, 0-255
constexpr unsigned fanConfig1( unsigned channel ) { return base( channel ) + 0x32; } // 6-5 RANGE
constexpr unsigned tachHigh( unsigned channel ) { return base( channel ) + 0x3E; }   // count 12-5
constexpr unsigned tachLow( unsigned channel ) { return base( channel ) + 0x3F; } // 7-3: count 4-0

constexpr int tachCount( uint8_t high, uint8_t low ) { return high << 5 | low >> 3; }
constexpr uint8_t tachMultiplier( uint8_t config1 ) {
   return static_cast<uint8_t>( 1u << ( config1 >> 5 & 3 ) );
}

// Two poles, five edges a turn, 32.768 kHz tach clock: rpm = multiplier * this / count.
constexpr int32_t rpmTimesCount = 3'932'160;

static_assert( fanSetting( 2 ) == 0x50 && tachLow( 2 ) == 0x5F );
static_assert( tachCount( 0x0F, 0xF8 ) == 511 );
static_assert( tachMultiplier( 0x60 ) == 8 );

} // namespace Drivers::EMC2305Map
