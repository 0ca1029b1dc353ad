#include "simulator/chips/Cpld.h"

namespace Simulator {

EntryKey registersKey() {
   const EntryKey scratch = object(
      "", "",
      { integer( "address", "Of 16 bits.", 0, 65535 ), integer( "value", "A byte.", 0, 255 ) } );
   return list( "registers", "What scratch registers hold after power-on.", scratch ).optional();
}

Cpld::Registers registersIn( const ChipEntry &entry ) {
   Cpld::Registers registers;
   if ( const auto *list = entry.find( "registers" ) ) {
      for ( const auto &each : list->elements() )
         registers[static_cast<uint16_t>( *each.unsignedOf( "address" ) )] =
            static_cast<uint8_t>( *each.unsignedOf( "value" ) );
   }
   return registers;
}

} // namespace Simulator
