#pragma once

#include "OrbisUtil/Smbus.pb.h"
#include "smbus/RootBusId.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace SmbusClient {

// How many bytes a transfer carries, and in which form.
struct Size {
   enum class Form { Bytes, Word, Block }; // a word is two bytes, low byte first
   Form form = Form::Bytes;
   uint32_t count = 1; // 0 for a block: the chip or the data says it
};

// A multiplexer between bus and chip: its address and the byte that opens the channel.
struct Via {
   uint8_t address;
   uint8_t select;
};

// One chip, and the multiplexers before it.
struct Target {
   Bus::RootBusId bus;
   uint8_t address = 0;
   std::vector<Via> vias; // outermost first
   bool pec = false;

   // Append requests to a transaction: open() first, then addTo(), close() at the end.
   Smbus::Request &addTo( Smbus::TransactionRequest &, Smbus::RequestType, uint32_t offset,
                          uint32_t length ) const;
   void open( Smbus::TransactionRequest & ) const;
   void close( Smbus::TransactionRequest & ) const; // innermost first
};

// Each returns nothing when the text has another form.
std::optional<Target> parseTarget( std::string_view text ); // scd(4):1:2:0x48
std::optional<Via> parseVia( std::string_view text );       // 0x70=1
std::optional<Size> parseSize( std::string_view text ); // byte, word, block or a number of bytes

std::string toString( const Target & );

} // namespace SmbusClient
