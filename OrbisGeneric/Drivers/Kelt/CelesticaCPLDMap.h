// Registers of the board's two transceiver CPLDs. Source: the board's CPLD register map.
//
// Each control or status line of a port is one bit. A register map has groups of four registers,
// one register for each signal. Ports below the first limit are in group 0, and the bit is the
// port. Each limit starts the next group; there the bit is the port minus the limit.
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

// LEDs: bits 1-0 system LED, bit 2 PSU LED 0, bit 3 PSU LED 1. A bit of 0 lights a PSU LED.
constexpr uint16_t ledRegister = 0x303;
constexpr uint8_t systemLedMask = 0x03;
constexpr uint8_t systemLedOff = 0x03;
constexpr uint8_t systemLedGood = 0x00;
constexpr uint8_t systemLedBeacon = 0x02; // the CPLD blinks it
constexpr uint8_t psuLedMask( unsigned led ) { return static_cast<uint8_t>( 1u << ( led + 2 ) ); }

} // namespace Drivers::CelesticaCPLDMap
