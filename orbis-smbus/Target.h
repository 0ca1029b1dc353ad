#pragma once

#include "OrbisUtil/Smbus.pb.h"
#include "smbus/RootBusId.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace SmbusClient {

// A multiplexer on the way: the address of its chip and the byte that opens the channel.
struct Via {
   uint8_t address;
   uint8_t select;
};

// One chip, and how to get there.
struct Target {
   Bus::RootBusId bus;
   uint8_t address = 0;
   std::vector<Via> vias; // outermost first
   bool pec = false;

   // A transaction of what this does to the chip, in order.
   Smbus::Request &addTo( Smbus::TransactionRequest &, Smbus::RequestType, uint32_t offset,
                          uint32_t length ) const;
   void open( Smbus::TransactionRequest & ) const;
   void close( Smbus::TransactionRequest & ) const; // innermost first
};

// "scd(4):1:2:0x48" and "0x70=1". Nothing when the text isn't so.
std::optional<Target> parseTarget( std::string_view text );
std::optional<Via> parseVia( std::string_view text );

std::string toString( const Target & );

} // namespace SmbusClient
