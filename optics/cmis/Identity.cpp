#include "optics/Checksums.h"
#include "optics/Text.h"
#include "optics/cmis/Cmis.h"
#include "optics/cmis/Options.h"
#include "optics/tables/Tables.h"

#include <fmt/format.h>

namespace Optics::Cmis {

namespace {

// Major, minor; 0.0 is none, and FFh FFh isn't valid.
std::string versionAt( const Half &half, unsigned first ) {
   const auto both = half.word( first );
   if ( !both || *both == 0 || *both == 0xFFFF )
      return "";
   return fmt::format( "{}.{}", *both >> 8, *both & 0xFF );
}

// Bits 7 and 6 are the multiplier, 5 to 0 the base. 11 isn't for single mode fibre. A cable of FFh
// is longer than the byte can tell.
void addScaledLength( Module &module, const char *medium, std::optional<uint8_t> byte,
                      double metres, bool isFibre ) {
   static constexpr double multipliers[] = { 0.1, 1, 10, 100 };
   if ( !byte || ( *byte & 0x3F ) == 0 )
      return;
   const unsigned multiplier = *byte >> 6;
   if ( multiplier == 3 && isFibre ) {
      module.findings.push_back( fmt::format(
         "the length of {} fibre has a reserved multiplier (page 01h, byte 132)", medium ) );
      return;
   }
   module.lengths.push_back(
      { medium, ( *byte & 0x3F ) * multipliers[multiplier] * metres, !isFibre && *byte == 0xFF } );
}

// CMIS, page 00h byte 202; page 01h bytes 132 to 136.
void decodeLengths( const Image &image, Module &module ) {
   addScaledLength( module, "cable", Half( image, page00 ).byte( 202 ), 1, false );
   if ( module.isFlat )
      return;
   const Half advertised( image, page01 );
   const auto add = [&]( const char *medium, unsigned number, double metres ) {
      if ( const auto units = advertised.byte( number ); units.value_or( 0 ) != 0 )
         module.lengths.push_back( { medium, *units * metres, false } ); // 255 is no more than 255
   };
   addScaledLength( module, "single mode", advertised.byte( 132 ), 1000, true );
   add( "OM5", 133, 2 );
   add( "OM4", 134, 2 );
   add( "OM3", 135, 2 );
   add( "OM2", 136, 1 );
}

// CMIS, page 00h byte 212, and what depends on it: 204 to 207 are the attenuation of copper, page
// 01h bytes 138 to 141 the wavelength of light.
void decodeTechnology( const Image &image, Module &module ) {
   const Half identity( image, page00 );
   const auto technology = identity.byte( 212 );
   if ( !technology )
      return;
   module.technology = technologyCode( *technology );
   if ( isCopper( *module.technology ) ) {
      static constexpr double gigahertz[] = { 5, 7, 12.9, 25.8 };
      for ( unsigned i = 0; i < 4; ++i )
         if ( const auto decibel = identity.byte( 204 + i ); decibel.value_or( 0 ) != 0 )
            module.attenuations.push_back( { gigahertz[i], double( *decibel ) } );
      return;
   }
   if ( module.isFlat )
      return;
   const Half advertised( image, page01 );
   const auto wavelength = advertised.word( 138 ); // 0.05 nm
   const auto tolerance = advertised.word( 140 );  // 0.005 nm
   if ( wavelength.value_or( 0 ) != 0 )
      module.wavelength = *wavelength / 20.0;
   if ( tolerance.value_or( 0 ) != 0 )
      module.wavelengthTolerance = *tolerance / 200.0;
}

// CMIS, page 01h.
void decodeAdvertised( const Image &image, Module &module ) {
   const Half advertised( image, page01 );
   module.hardware = versionAt( advertised, 130 );
   const auto highest = advertised.byte( 146 );
   const auto lowest = advertised.byte( 147 );
   if ( highest && lowest && ( *highest || *lowest ) ) { // both 0: not told
      module.maximumTemperature = static_cast<int8_t>( *highest );
      module.minimumTemperature = static_cast<int8_t>( *lowest );
   }
   addOptions( advertised, module );
   if ( const auto banks = advertised.bits( 142, 1, 0 ); banks.value_or( 0 ) != 0 )
      module.findings.emplace_back( "the module has more than 8 lanes: the lanes 9 and above are "
                                    "not shown" );
   addChecksum( module, advertised,
                { "page 01h", 130, 254, 255, "what the module says that it can do" } );
}

} // namespace

void decodeIdentity( const Image &image, Module &module ) {
   const Half base( image, lower );
   const Half identity( image, page00 );
   module.isFlat = isFlat( image ).value_or( true );
   if ( const auto revision = base.byte( 1 ) )
      module.revision = fmt::format( "CMIS {}.{}", *revision >> 4, *revision & 0x0F );
   module.firmware = versionAt( base, 39 );
   if ( const auto type = base.byte( 85 ) )
      module.mediaType = mediaTypeCode( *type );
   module.vendor = identity.text( 129, 16 );
   module.oui = ouiText( identity.bytes( 145, 3 ).value_or( std::vector<uint8_t>{} ) );
   module.partNumber = identity.text( 148, 16 );
   module.vendorRevision = identity.text( 164, 2 );
   module.serial = identity.text( 166, 16 );
   module.dateCode = identity.text( 182, 8 );
   module.clei = identity.text( 190, 10 );
   if ( const auto powerClass = identity.bits( 200, 7, 5 ) )
      module.powerClass = *powerClass + 1;
   // 0.25 W. The classes mean other powers in each form factor, so that they don't give one.
   if ( const auto quarters = identity.byte( 201 ); quarters.value_or( 0 ) != 0 )
      module.maximumPower = *quarters / 4.0;
   if ( const auto connector = identity.byte( 203 ) )
      module.connector = connectorCode( *connector );
   addChecksum( module, identity,
                { "page 00h", 128, 221, 222,
                  "the vendor, the part number, the serial number, the "
                  "date and the power" } );
   decodeLengths( image, module );
   decodeTechnology( image, module );
   if ( !module.isFlat )
      decodeAdvertised( image, module );
}

} // namespace Optics::Cmis
