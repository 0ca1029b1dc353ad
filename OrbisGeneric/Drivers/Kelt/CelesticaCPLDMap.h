// Registers of the board's two transceiver CPLDs. Source: the board's CPLD register map.
//
// A port's control and status lines are single bits. A register map lists registers in groups of
// four, one for each signal; ports below the first limit are in group 0, bit = port; ports from one
// limit up to the next are in the next group, bit = port minus that limit.
#pragma once

#include <cstdint>
#include <vector>

namespace Drivers::CelesticaCPLDMap {

using Registers = std::vector<uint16_t>;
using Limits = std::vector<uint32_t>;

enum QsfpSignal { QsfpReset, QsfpLpMode, QsfpPresence, QsfpInterrupt }; // reset, interrupt: low
enum SfpSignal { SfpRxLos, SfpTxDisable, SfpTxFault, SfpPresence };
constexpr unsigned signalsPerGroup = 4;

// The register of a signal in the group of a register index.
inline uint16_t registerOf( const Registers &map, unsigned signal, unsigned registerIndex ) {
   return map.at( signal + signalsPerGroup * registerIndex );
}

// LEDs: bits 1-0 system LED, bit 2 PSU LED 0, bit 3 PSU LED 1. A PSU LED's bit cleared: lit.
constexpr uint16_t ledRegister = 0x303;
constexpr uint8_t systemLedMask = 0x03;
constexpr uint8_t systemLedOff = 0x03;
constexpr uint8_t systemLedGood = 0x00;
constexpr uint8_t systemLedBeacon = 0x02; // the CPLD blinks it
constexpr uint8_t psuLedMask( unsigned led ) { return static_cast<uint8_t>( 1u << ( led + 2 ) ); }

} // namespace Drivers::CelesticaCPLDMap
