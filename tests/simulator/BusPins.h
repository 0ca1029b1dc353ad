// Drives the bus of one chip, byte by byte.
#pragma once

#include "simulator/chips/Chip.h"

#include <vector>

namespace SimulatorTest {

using Bytes = std::vector<int>;

// Writes the command, then reads after a repeated start. The address matters to chips with several.
inline Bytes readFrom( Simulator::Chip &chip, uint32_t command, unsigned count,
                       uint8_t address = 0x50 ) {
   Bytes bytes;
   if ( chip.addressedAt( address, Simulator::Direction::Write ) && chip.command( command ) &&
        chip.addressedAt( address, Simulator::Direction::Read ) ) {
      while ( count-- > 0 )
         bytes.push_back( chip.read() );
   }
   chip.stopped();
   return bytes;
}

// Returns how many bytes after the address the chip acknowledges. The command counts as one.
inline int writeTo( Simulator::Chip &chip, uint32_t command, const Bytes &bytes,
                    uint8_t address = 0x50 ) {
   int acknowledged = 0;
   if ( chip.addressedAt( address, Simulator::Direction::Write ) && chip.command( command ) ) {
      ++acknowledged;
      for ( const int byte : bytes ) {
         if ( !chip.write( static_cast<uint8_t>( byte ) ) )
            break;
         ++acknowledged;
      }
   }
   chip.stopped();
   return acknowledged;
}

// Throws std::out_of_range when the chip has no such quantity.
inline Simulator::Quantity quantity( Simulator::Chip &chip, const std::string &name ) {
   for ( const Simulator::Quantity &each : chip.quantities() ) {
      if ( each.name == name )
         return each;
   }
   throw std::out_of_range( name );
}

} // namespace SimulatorTest
