#include "optics/Decode.h"

#include "optics/Half.h"
#include "optics/Parts.h"
#include "optics/Text.h"
#include "optics/cmis/Cmis.h"
#include "optics/sff8472/Sff8472.h"
#include "optics/sff8636/Sff8636.h"
#include "optics/tables/Tables.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace Optics {

namespace {

constexpr Region firstHalf{ 0x50 };

std::optional<Standard> standardOfIdentifier( uint8_t identifier ) {
   switch ( identifier ) { // SFF-8024
   case 0x02:
   case 0x03:
      return Standard::Sff8472;
   case 0x0C:
   case 0x0D:
   case 0x11:
      return Standard::Sff8636;
   case 0x18:
   case 0x19:
   case 0x1E:
   case 0x1F:
   case 0x20:
   case 0x21:
      return Standard::Cmis;
   default:
      return {};
   }
}

void decodeIdentifier( const Image &image, Module &module ) {
   const auto identifier = image.byte( firstHalf, 0 );
   if ( !identifier )
      return;
   module.identifier = identifierCode( *identifier );
   if ( standardOfIdentifier( *identifier ) != module.standard )
      module.findings.push_back(
         fmt::format( "byte 0 is {:02X}h ({}), which is no module of {}: what follows may be wrong",
                      *identifier, module.identifier.name, nameOf( module.standard ) ) );
   const auto copy = Half( image, Region{ 0x50, true } ).byte( 128 );
   if ( module.standard != Standard::Sff8472 && copy && *copy != *identifier )
      module.findings.push_back( fmt::format( "byte 0 is {:02X}h and byte 128 of page 00h, its "
                                              "copy, is {:02X}h: one of them is wrong",
                                              *identifier, *copy ) );
}

void decodeRest( const Image &image, Module &module ) {
   switch ( module.standard ) {
   case Standard::Sff8472:
      Sff8472::decodeIdentity( image, module );
      Sff8472::decodeDiagnostics( image, module );
      break;
   case Standard::Sff8636:
      Sff8636::decodeIdentity( image, module );
      Sff8636::decodeDiagnostics( image, module );
      break;
   case Standard::Cmis:
      Cmis::decodeIdentity( image, module );
      Cmis::decodeApplications( image, module );
      Cmis::decodeMonitors( image, module );
      Cmis::decodeStates( image, module );
      break;
   }
}

// A blank memory, and a bus without pull-ups or module, read like this.
void findBlankHalves( const Image &image, Module &module ) {
   for ( const auto &[region, bytes] : image.regions() )
      if ( std::all_of( bytes.begin(), bytes.end(),
                        []( const auto &byte ) { return byte == 0xFF; } ) )
         module.findings.push_back( fmt::format(
            "all bytes of {} ({} to {}) are FFh: they are not programmed, or were not "
            "read from the module",
            nameOf( region, module.standard ), region.upper ? 128 : 0, region.upper ? 255 : 127 ) );
}

} // namespace

std::optional<Standard> standardOf( const Image &image ) {
   const auto identifier = image.byte( firstHalf, 0 );
   return identifier ? standardOfIdentifier( *identifier ) : std::nullopt;
}

Module decode( const Image &image, Standard standard ) {
   Module module;
   module.standard = standard;
   module.findings = missingParts( image, standard );
   findBlankHalves( image, module );
   decodeIdentifier( image, module );
   decodeRest( image, module );
   module.date = dateOf( module.dateCode );
   module.lot = lotOf( module.dateCode );
   if ( module.isReady == false )
      module.findings.emplace_back(
         "the module says that its data are not ready: its monitors have no values" );
   return module;
}

std::optional<double> dBm( double milliwatts ) {
   return milliwatts > 0 ? std::optional( 10 * std::log10( milliwatts ) ) : std::nullopt;
}

const char *nameOf( Standard standard ) {
   switch ( standard ) {
   case Standard::Sff8472:
      return "SFF-8472";
   case Standard::Sff8636:
      return "SFF-8636";
   case Standard::Cmis:
      return "CMIS";
   }
   return "";
}

const char *nameOf( Quantity quantity ) {
   switch ( quantity ) {
   case Quantity::Temperature:
      return "temperature";
   case Quantity::SupplyVoltage:
      return "supply voltage";
   case Quantity::TxBias:
      return "tx bias";
   case Quantity::TxPower:
      return "tx power";
   case Quantity::RxPower:
      return "rx power";
   case Quantity::LaserTemperature:
      return "laser temperature";
   case Quantity::TecCurrent:
      return "TEC current";
   case Quantity::SecondVoltage:
      return "second supply voltage";
   }
   return "";
}

} // namespace Optics
