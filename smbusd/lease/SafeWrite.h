#pragma once

#include "OrbisUtil/Smbus.pb.h"
#include "smbus/Control.pb.h"
#include "smbus/RootBusId.h"
#include "smbus/SegmentPath.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace Smbusd {

// What a register is to hold when nobody controls the board any more.
struct SafeWrite {
   Bus::RootBusId bus{};
   Bus::SegmentPath path{};
   uint8_t address = 0;
   uint8_t number = 0; // of the register
   uint8_t value = 0;
   std::optional<uint8_t> mask{}; // only these bits; without one the whole register

   // The transactions: with a mask first the one that reads, then the one that writes.
   Smbus::TransactionRequest reading() const;
   Smbus::TransactionRequest writing( uint8_t byte ) const;
   // What to write, from what was read.
   uint8_t merged( uint8_t byte ) const;
};

// "0xff to register 0x30 of 0x2e on scd(4):1:5".
std::string toText( const SafeWrite &write );

// A lease can't be given as it was asked for; the text says why.
struct LeaseError : std::runtime_error {
   using std::runtime_error::runtime_error;
};

// Throws LeaseError for the first one that isn't valid.
std::vector<SafeWrite> safeWritesIn( const SmbusControl::Lease &lease );

} // namespace Smbusd
