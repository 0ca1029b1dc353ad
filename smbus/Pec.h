#pragma once

#include <array>
#include <cstdint>

namespace Bus {

// The packet error code of SMBus 1.1 and later: CRC-8 with x^8 + x^2 + x + 1, over every byte on
// the bus since the start condition, including addresses with their direction bit.
constexpr std::array<uint8_t, 256> pecTable = [] {
   std::array<uint8_t, 256> table{};
   for ( unsigned byte = 0; byte < table.size(); ++byte ) {
      auto crc = static_cast<uint8_t>( byte );
      for ( int bit = 0; bit < 8; ++bit )
         crc = static_cast<uint8_t>( crc & 0x80 ? crc << 1 ^ 0x07 : crc << 1 );
      table[byte] = crc;
   }
   return table;
}();
constexpr uint8_t pecStep( uint8_t crc, uint8_t byte ) { return pecTable[crc ^ byte]; }

static_assert( pecStep( 0, 0x01 ) == 0x07 && pecStep( 0, 0x80 ) == 0x89 );

} // namespace Bus
