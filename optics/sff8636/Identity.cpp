#include "optics/Checksums.h"
#include "optics/Lengths.h"
#include "optics/Text.h"
#include "optics/sff8636/Compliance.h"
#include "optics/sff8636/Sff8636.h"
#include "optics/tables/Tables.h"

namespace Optics::Sff8636 {

namespace {

// SFF-8636, lower byte 1.
constexpr NamedNumber revisions[] = {
   { 0x01, "8436 4.8 or older" }, { 0x02, "8436 4.8 or older, with bytes 186 to 189" },
   { 0x03, "8636 1.3" },          { 0x04, "8636 1.4" },
   { 0x05, "8636 1.5" },          { 0x06, "8636 2.0" },
   { 0x07, "8636 2.5 to 2.7" },   { 0x08, "8636 2.8 to 2.10" },
};

// SFF-8636, page 00h byte 141.
constexpr NamedNumber rateSelects[] = {
   { 0x00, "unspecified" },
   { 0x01, "QSFP+ rate select version 1" },
   { 0x02, "QSFP+ rate select version 2" },
};

constexpr uint8_t noSeparableConnector = 0x23;

// Page 00h byte 129: bit 5 is class 8, whose power is in lower byte 107; bits 1 and 0 are the
// classes 5 to 7, bits 7 and 6 the classes 1 to 4.
void decodePower( const Image &image, Module &module ) {
   const auto identifier = Half( image, page00 ).byte( 129 );
   if ( !identifier )
      return;
   if ( *identifier & 0x20 ) {
      module.powerClass = 8;
      const auto tenths = Half( image, lower ).byte( 107 ); // 0.1 W
      if ( tenths.value_or( 0 ) != 0 )
         module.maximumPower = *tenths / 10.0;
      return;
   }
   static constexpr double watts[] = { 1.5, 2.0, 2.5, 3.5, 4.0, 4.5, 5.0 };
   const unsigned high = *identifier & 0x03;
   module.powerClass = high ? 4 + high : 1 + ( *identifier >> 6 );
   module.maximumPower = watts[*module.powerClass - 1];
}

// Page 00h bytes 142 to 146.
void decodeLengths( const Half &identity, const Code &technology, Module &module ) {
   if ( isCopper( technology ) ) {
      addLength( module, "cable", identity.byte( 146 ), 1 );
      return;
   }
   addLength( module, "single mode", identity.byte( 142 ), 1000 );
   addLength( module, "OM3", identity.byte( 143 ), 2 );
   addLength( module, "OM2", identity.byte( 144 ), 1 );
   addLength( module, "OM1", identity.byte( 145 ), 1 );
   // Of a module with an 850 nm VCSEL and a connector, 146 is for OM4 fibre.
   const auto connector = identity.byte( 130 );
   if ( !connector )
      return;
   if ( technology.number == 0 && *connector != noSeparableConnector )
      addLength( module, "OM4", identity.byte( 146 ), 2 );
   else
      addLength( module, "cable", identity.byte( 146 ), 1 );
}

// Page 00h bytes 186 to 189, and 145: of copper its attenuation.
void decodeAttenuations( const Half &identity, Module &module ) {
   static constexpr std::pair<unsigned, double> places[] = {
      { 186, 2.5 }, { 187, 5.0 }, { 188, 7.0 }, { 189, 12.9 }, { 145, 25.78 }
   };
   for ( const auto &[number, gigahertz] : places )
      if ( const auto decibel = identity.byte( number ); decibel.value_or( 0 ) != 0 )
         module.attenuations.push_back( { gigahertz, double( *decibel ) } );
}

void decodeWavelength( const Half &identity, Module &module ) {
   const auto wavelength = identity.word( 186 ); // 0.05 nm
   const auto tolerance = identity.word( 188 );  // 0.005 nm
   if ( wavelength.value_or( 0 ) != 0 )
      module.wavelength = *wavelength / 20.0;
   if ( tolerance.value_or( 0 ) != 0 )
      module.wavelengthTolerance = *tolerance / 200.0;
}

// Page 00h byte 140 in 100 MBd, or byte 222 in 250 MBd.
std::optional<double> bitRateOf( const Half &identity ) {
   const auto nominal = identity.byte( 140 );
   if ( !nominal || *nominal == 0 )
      return {};
   if ( *nominal != 0xFF )
      return *nominal * 100.0;
   const auto extended = identity.byte( 222 );
   return extended && *extended ? std::optional( *extended * 250.0 ) : std::nullopt;
}

void decodeTechnology( const Half &identity, Module &module ) {
   const auto technology = identity.bits( 147, 7, 4 );
   if ( !technology )
      return;
   module.technology = technologyCode( *technology );
   decodeLengths( identity, *module.technology, module );
   if ( isCopper( *module.technology ) )
      decodeAttenuations( identity, module );
   else
      decodeWavelength( identity, module );
}

} // namespace

void decodeIdentity( const Image &image, Module &module ) {
   const Half base( image, lower );
   const Half identity( image, page00 );
   const auto code = [&]( unsigned number, Code ( *name )( uint8_t ) ) {
      const auto found = identity.byte( number );
      return found ? std::optional( name( *found ) ) : std::nullopt;
   };
   if ( const auto revision = base.byte( 1 ); revision.value_or( 0 ) != 0 )
      module.revision = codeOf( *revision, revisions ).name;
   if ( const auto isFlat = base.bit( 2, 2 ) )
      module.isFlat = *isFlat;
   decodePower( image, module );
   module.connector = code( 130, connectorCode );
   addNamesOfSetBits( module.compliance, identity, complianceBits() );
   if ( identity.bit( 131, 7 ) == true )
      module.extendedCompliance = code( 192, extendedComplianceCode );
   module.encoding = code( 139, encodingOfSff8636 );
   module.bitRate = bitRateOf( identity );
   if ( const auto select = identity.bits( 141, 1, 0 ) )
      module.rateIdentifier = codeOf( *select, rateSelects );
   decodeTechnology( identity, module );
   module.vendor = identity.text( 148, 16 );
   module.oui = ouiText( identity.bytes( 165, 3 ).value_or( std::vector<uint8_t>{} ) );
   module.partNumber = identity.text( 168, 16 );
   module.vendorRevision = identity.text( 184, 2 );
   if ( const auto celsius = identity.byte( 190 ) )
      module.maximumTemperature = *celsius ? *celsius : 70; // 0 stands for 70
   addNamesOfSetBits( module.options, identity, optionBits() );
   module.serial = identity.text( 196, 16 );
   module.dateCode = identity.text( 212, 8 );
   if ( !module.isFlat && identity.bit( 129, 4 ) == true && identity.bit( 195, 7 ) == true )
      module.clei = Half( image, page02 ).text( 128, 10 );
   addChecksum(
      module, identity,
      { "CC_BASE", 128, 190, 191, "the type, the vendor, the part number and the wavelength" } );
   addChecksum( module, identity,
                { "CC_EXT", 192, 222, 223, "the options, the serial number and the date" } );
}

} // namespace Optics::Sff8636
