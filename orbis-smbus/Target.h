#pragma once

#include "smbus/RootBusId.h"
#include "smbus/SegmentPath.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace SmbusClient {

// How many bytes a transfer carries, and in which form.
struct Size {
   enum class Form { Bytes, Word, Block }; // a word is two bytes, low byte first
   Form form = Form::Bytes;
   uint32_t count = 1; // 0 for a block: the chip or the data says it
};

// One chip, and the multiplexers before it.
struct Target {
   Bus::RootBusId bus;
   uint8_t address = 0;
   Bus::SegmentPath vias;
   bool pec = false;
};

// Each returns nothing when the text has another form.
std::optional<Target> parseTarget( std::string_view text ); // scd(4):1:2:0x48
std::optional<Size> parseSize( std::string_view text ); // byte, word, block or a number of bytes

std::string toString( const Target & );

} // namespace SmbusClient
