// What a host does with the memory of a pluggable module.
#pragma once

#include "BusPins.h"

#include <numeric>
#include <string>

namespace SimulatorTest {

inline int byteOf( Simulator::Chip &chip, uint32_t at, uint8_t address = 0x50 ) {
   return readFrom( chip, at, 1, address ).at( 0 );
}
inline int wordOf( Simulator::Chip &chip, uint32_t at, uint8_t address = 0x50 ) {
   const Bytes bytes = readFrom( chip, at, 2, address );
   return bytes.at( 0 ) << 8 | bytes.at( 1 );
}
inline std::string textOf( Simulator::Chip &chip, uint32_t at, unsigned length ) {
   const Bytes bytes = readFrom( chip, at, length );
   return { bytes.begin(), bytes.end() };
}
// The low byte of the sum of `first` up to `last`.
inline int sumOf( Simulator::Chip &chip, unsigned first, unsigned last, uint8_t address = 0x50 ) {
   const Bytes bytes = readFrom( chip, first, last - first + 1, address );
   return std::accumulate( bytes.begin(), bytes.end(), 0 ) & 0xFF;
}
inline bool answers( Simulator::Chip &chip, uint8_t address = 0x50 ) {
   return !readFrom( chip, 0, 1, address ).empty();
}
inline void set( Simulator::Chip &chip, const std::string &name, double value ) {
   quantity( chip, name ).set( value );
}

} // namespace SimulatorTest
