#include "optics/Checksums.h"
#include "optics/Lengths.h"
#include "optics/Text.h"
#include "optics/sff8472/Compliance.h"
#include "optics/sff8472/Sff8472.h"
#include "optics/tables/Tables.h"

namespace Optics::Sff8472 {

namespace {

// SFF-8472, A0h byte 94.
constexpr NamedNumber revisions[] = {
   { 0x01, "8472 9.3" },  { 0x02, "8472 9.5" },  { 0x03, "8472 10.2" },
   { 0x04, "8472 10.4" }, { 0x05, "8472 11.0" }, { 0x06, "8472 11.3" },
   { 0x07, "8472 11.4" }, { 0x08, "8472 12.3" }, { 0x09, "8472 12.4" },
};

// What a length byte is a length of.
enum class Media : uint8_t { Fibre, Copper, Cable };

// A0h byte 8, bits 3 and 2, is a cable; byte 6, bits 3 and 2, is 1000BASE-T and 1000BASE-CX.
std::optional<Media> mediaOf( const Half &serial ) {
   const auto isCable = serial.bits( 8, 3, 2 );
   const auto copper = serial.bits( 6, 3, 2 );
   if ( !isCable || !copper )
      return {};
   if ( *isCable )
      return Media::Cable;
   return *copper ? Media::Copper : Media::Fibre;
}

// A0h bytes 14 to 19.
void decodeLengths( const Half &serial, Module &module ) {
   const auto media = mediaOf( serial );
   if ( !media )
      return;
   if ( media == Media::Cable ) {
      // Of a cable, 14 and 15 are its attenuation.
      for ( const auto &[number, gigahertz] : { std::pair( 14u, 12.9 ), std::pair( 15u, 25.78 ) } )
         if ( const auto decibel = serial.byte( number ); decibel.value_or( 0 ) != 0 )
            module.attenuations.push_back( { gigahertz, double( *decibel ) } );
      addLength( module, "cable", serial.byte( 18 ), 1 );
      return;
   }
   const auto kilometres = serial.byte( 14 );
   const auto hundredMetres = serial.byte( 15 );
   // Both give the length of single mode fibre; the finer one holds up to 25.4 km.
   if ( hundredMetres && *hundredMetres != 0 && *hundredMetres != 255 )
      addLength( module, "single mode", hundredMetres, 100 );
   else if ( hundredMetres && kilometres )
      addLength( module, "single mode", *kilometres ? kilometres : hundredMetres,
                 *kilometres ? 1000 : 100 );
   addLength( module, "OM2", serial.byte( 16 ), 10 );
   addLength( module, "OM1", serial.byte( 17 ), 10 );
   if ( media == Media::Copper )
      addLength( module, "copper", serial.byte( 18 ), 1 );
   else
      addLength( module, "OM4", serial.byte( 18 ), 10 );
   addLength( module, "OM3", serial.byte( 19 ), 10 );
}

// A0h byte 12 in 100 MBd, or byte 66 in 250 MBd.
std::optional<double> bitRateOf( const Half &serial ) {
   const auto nominal = serial.byte( 12 );
   if ( !nominal || *nominal == 0 )
      return {};
   if ( *nominal != 0xFF )
      return *nominal * 100.0;
   const auto maximum = serial.byte( 66 );
   return maximum && *maximum ? std::optional( *maximum * 250.0 ) : std::nullopt;
}

// A0h byte 64: bit 6 is level 4, bit 5 is 3 (or 4), bit 1 is 2.
void decodePower( const Image &image, Module &module ) {
   const auto levels = Half( image, a0 ).byte( 64 );
   if ( !levels )
      return;
   if ( *levels & 0x40 ) {
      module.powerClass = 4;
      // A2h byte 66, in 0.1 W. External calibration has constants there.
      const bool isThere = hasDiagnostics( image ) == true && !module.isExternallyCalibrated;
      const auto tenths = isThere ? Half( image, a2 ).byte( 66 ) : std::nullopt;
      if ( tenths.value_or( 0 ) != 0 )
         module.maximumPower = *tenths / 10.0;
      return;
   }
   module.powerClass = *levels & 0x20 ? 3 : *levels & 0x02 ? 2 : 1;
   module.maximumPower = 0.5 + 0.5 * *module.powerClass; // 1.0, 1.5, 2.0 W
}

// A0h bytes 60 and 61: of a cable what it complies with, otherwise nanometres.
void decodeWavelength( const Half &serial, Module &module ) {
   const auto isCable = serial.bits( 8, 3, 2 );
   const auto word = serial.word( 60 );
   if ( !isCable || !word )
      return;
   if ( *isCable )
      addNamesOfSetBits( module.compliance, serial,
                         *isCable & 2 ? activeCableBits() : passiveCableBits() );
   else if ( *word )
      module.wavelength = *word;
}

void addChecksums( const Half &serial, Module &module ) {
   addChecksum(
      module, serial,
      { "CC_BASE", 0, 62, 63, "the type, the vendor, the part number and the wavelength" } );
   addChecksum( module, serial,
                { "CC_EXT", 64, 94, 95, "the options, the serial number and the date" } );
}

} // namespace

void decodeIdentity( const Image &image, Module &module ) {
   const Half serial( image, a0 );
   const auto code = [&]( unsigned number, Code ( *name )( uint8_t ) ) {
      const auto found = serial.byte( number );
      return found ? std::optional( name( *found ) ) : std::nullopt;
   };
   module.connector = code( 2, connectorCode );
   addNamesOfSetBits( module.compliance, serial, complianceBits() );
   module.encoding = code( 11, encodingOfSff8472 );
   module.bitRate = bitRateOf( serial );
   module.rateIdentifier = code( 13, rateIdentifierCode );
   decodeLengths( serial, module );
   module.vendor = serial.text( 20, 16 );
   module.extendedCompliance = code( 36, extendedComplianceCode );
   module.oui = ouiText( serial.bytes( 37, 3 ).value_or( std::vector<uint8_t>{} ) );
   module.partNumber = serial.text( 40, 16 );
   module.vendorRevision = serial.text( 56, 4 );
   decodeWavelength( serial, module );
   addNamesOfSetBits( module.options, serial, optionBits() );
   module.serial = serial.text( 68, 16 );
   module.dateCode = serial.text( 84, 8 );
   if ( const auto revision = serial.byte( 94 ); revision.value_or( 0 ) != 0 )
      module.revision = codeOf( *revision, revisions ).name;
   module.isExternallyCalibrated = serial.bits( 92, 5, 4 ) == 1;
   decodePower( image, module );
   addChecksums( serial, module );
}

} // namespace Optics::Sff8472
