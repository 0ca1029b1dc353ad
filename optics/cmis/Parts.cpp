#include "optics/cmis/Cmis.h"

#include <bit>

namespace Optics::Cmis {

namespace {

constexpr Part::Kind identity = Part::Kind::Identity;
constexpr Part::Kind live = Part::Kind::Live;

// Behind the last monitor of the module. Page 01h byte 159: bit 0 is the temperature, at 14; 1 the
// voltage; 2 to 4 the auxiliary ones.
unsigned endOfMonitors( uint8_t monitors ) { return 14 + 2 * std::bit_width( monitors & 0x1Fu ); }

} // namespace

std::optional<bool> isFlat( const Image &image ) { return Half( image, lower ).bit( 2, 7 ); }

std::vector<Part> parts( const Image &image ) {
   std::vector<Part> parts{
      { identity, { lower, 0, 3 }, "the module's type and revision" },
      { identity, { lower, 39, 2 }, "the revision of the firmware" },
      { identity, { lower, 85, 33 }, "the applications 1 to 8" },
      { identity, { page00, 128, 95 }, "the module's identity" },
   };
   const auto flat = isFlat( image );
   if ( !flat )
      return parts;
   if ( *flat ) {
      parts.push_back( { live, { lower, 2, 2 }, "the states" } );
      return parts;
   }
   parts.push_back( { identity, { page01, 128, 128 }, "what the module can do" } );
   const Half advertised( image, page01 );
   const auto moduleMonitors = advertised.byte( 159 );
   const auto laneMonitors = advertised.bits( 160, 2, 0 );
   if ( !moduleMonitors || !laneMonitors )
      return parts;
   if ( *moduleMonitors & 0x1F || *laneMonitors )
      parts.push_back( { identity, { page02, 128, 128 }, "the thresholds" } );
   const unsigned end = endOfMonitors( *moduleMonitors );
   parts.push_back( { live, { lower, 2, end - 2 }, "the module's monitors, states and flags" } );
   parts.push_back( { live, { lower, 41, 1 }, "the cause of a fault" } );
   // Page 01h bytes 155 and 156, bit 1: outputs can be disabled.
   if ( advertised.bit( 155, 1 ) == true || advertised.bit( 156, 1 ) == true )
      parts.push_back( { live, { page10, 130, 9 }, "the disabled outputs" } );
   parts.push_back( { live, { page11, 128, 86 }, "the lanes' monitors, states and flags" } );
   return parts;
}

} // namespace Optics::Cmis
