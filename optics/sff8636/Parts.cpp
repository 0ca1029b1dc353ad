#include "optics/sff8636/Sff8636.h"
#include "optics/tables/Tables.h"

namespace Optics::Sff8636 {

namespace {

constexpr uint8_t revision28 = 8;

Part livePart( const Monitored &monitored ) {
   using enum Part::Kind;
   if ( monitored.lanes )
      return { Live, { lower, 2, 56 }, "the monitors, the states and the flags" };
   if ( monitored.temperature || monitored.voltage )
      return { Live, { lower, 2, 26 }, "the monitors, the states and the flags" };
   return { Live, { lower, 2, 1 }, "the states" };
}

} // namespace

std::optional<Monitored> monitored( const Image &image ) {
   const Half base( image, lower );
   const Half identity( image, page00 );
   const auto revision = base.byte( 1 );
   const auto technology = identity.bits( 147, 7, 4 );
   // SFF-8636, page 00h byte 220: bit 5 temperature, 4 voltage, 3 rx power is an average, 2 tx
   // power.
   const auto type = identity.byte( 220 );
   if ( !revision || !technology || !type )
      return {};
   Monitored found;
   // Modules before revision 2.8 don't tell these two. All but passive cables have them.
   const bool isTold = *revision >= revision28;
   const bool isPassive = isPassiveCopper( technologyCode( *technology ) );
   found.temperature = isTold ? *type & 0x20 : !isPassive;
   found.voltage = isTold ? *type & 0x10 : !isPassive;
   // No bit is for bias, and none for rx power. A module that measures anything has both, if it has
   // a laser.
   const bool measuresAnything = !isTold || *type & 0x3C;
   found.lanes = measuresAnything && !isPassive;
   found.txPower = found.lanes && *type & 0x04;
   return found;
}

std::vector<Part> parts( const Image &image ) {
   using enum Part::Kind;
   std::vector<Part> parts{
      { Identity, { lower, 0, 3 }, "the module's type and revision" },
      { Identity, { lower, 107, 7 }, "the greatest power and which lanes it has" },
      { Identity, { page00, 128, 96 }, "the module's identity and what it can do" },
   };
   const auto found = monitored( image );
   const bool isPaged = Half( image, lower ).bit( 2, 2 ) == false;
   // Page 00h, byte 129 bit 4: page 02h has a CLEI code; byte 195 bit 7: there is a page 02h.
   const Half identity( image, page00 );
   if ( isPaged && identity.bit( 129, 4 ) == true && identity.bit( 195, 7 ) == true )
      parts.push_back( { Identity, { page02, 128, 10 }, "the CLEI code" } );
   if ( !found )
      return parts;
   if ( isPaged && ( found->temperature || found->voltage || found->lanes ) )
      parts.push_back( { Identity, { page03, 128, 72 }, "the thresholds" } );
   parts.push_back( livePart( *found ) );
   // Of interest where there are lasers.
   if ( found->lanes )
      parts.push_back(
         { Live, { lower, 86, 8 }, "the transmitters and the power that are chosen" } );
   return parts;
}

} // namespace Optics::Sff8636
