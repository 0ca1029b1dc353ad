#include "optics/sff8472/Sff8472.h"

namespace Optics::Sff8472 {

std::optional<bool> hasDiagnostics( const Image &image ) {
   const Half serial( image, a0 );
   // SFF-8472, A0h byte 92: bit 6 has diagnostics, bit 2 at another address that must be switched
   // to.
   const auto implemented = serial.bit( 92, 6 );
   return implemented ? std::optional( *implemented && serial.bit( 92, 2 ) == false )
                      : std::nullopt;
}

bool needsAddressChange( const Image &image ) {
   const Half serial( image, a0 );
   return serial.bit( 92, 6 ) == true && serial.bit( 92, 2 ) == true;
}

std::vector<Part> parts( const Image &image ) {
   using enum Part::Kind;
   std::vector<Part> parts{
      { Identity, { a0, 0, 96 }, "the module's identity and what it can do" },
   };
   // Many modules without diagnostics don't answer at A2h at all.
   if ( hasDiagnostics( image ) == true ) {
      parts.push_back( { Identity, { a2, 0, 96 }, "the thresholds and the calibration" } );
      // A0h byte 93, bit 7: the flags, A2h bytes 112 to 117, are there.
      const bool hasFlags = Half( image, a0 ).bit( 93, 7 ) == true;
      parts.push_back(
         { Live,
           { a2, 96, hasFlags ? 22u : 15u },
           hasFlags ? "the monitors, the states and the flags" : "the monitors and the states" } );
   }
   return parts;
}

} // namespace Optics::Sff8472
