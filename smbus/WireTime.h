// What a transfer is on the two wires of a bus.
#pragma once

#include "smbus/RootBus.h"

#include <chrono>
#include <cstdint>

namespace Bus {

inline constexpr uint32_t usualClock = 100'000; // Hz, of SMBus and of I2C in standard mode

// Starts (a repeated one is a start), bytes with their acknowledges, and stops. SMBus 3.2,
// chapter 6.
struct WireCount {
   uint64_t starts = 0;
   uint64_t bytes = 0; // with addresses, counts and packet error codes
   uint64_t stops = 0;

   // Periods of the clock: one for a start or stop, nine for a byte.
   uint64_t bits() const { return starts + 9 * bytes + stops; }
   WireCount &operator+=( const WireCount &other ) {
      starts += other.starts;
      bytes += other.bytes;
      stops += other.stops;
      return *this;
   }
   friend bool operator==( const WireCount &, const WireCount & ) = default;
};

// Of a transfer that succeeds. A block read brings blockBytes.
WireCount onTheWires( const Transfer &, size_t blockBytes = 0 );

// Of a transfer with this outcome. What failed ends with the byte that was not acknowledged; where
// the bus can't tell which one that was, the whole transfer is counted. On I/O ports there are no
// wires, but only the caller knows that.
WireCount onTheWires( const Transfer &, const Outcome & );

// How long that takes at a clock in Hz.
inline std::chrono::nanoseconds wireTime( const WireCount &count, uint32_t clock ) {
   return std::chrono::nanoseconds( count.bits() * 1'000'000'000 / clock );
}

} // namespace Bus
