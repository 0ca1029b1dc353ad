#include "optics/Names.h"

#include <fmt/format.h>

namespace Optics {

Code codeOf( uint8_t number, std::span<const NamedNumber> table, unsigned firstOfVendor ) {
   for ( const NamedNumber &row : table )
      if ( row.number == number )
         return { number, row.name };
   const char *kind = number >= firstOfVendor ? "vendor specific" : "reserved";
   return { number, fmt::format( "{} ({:02X}h)", kind, number ) };
}

void addNamesOfSetBits( std::vector<std::string> &names, const Half &half,
                        std::span<const NamedBit> table ) {
   for ( const NamedBit &row : table )
      if ( half.bit( row.byte, row.bit ) == true )
         names.emplace_back( row.name );
}

} // namespace Optics
