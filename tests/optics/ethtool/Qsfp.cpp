// What ethtool prints of SFF-8636 alone.
#include "Comparison.h"

#include <cmath>
#include <fmt/format.h>

namespace OpticsTest {

using namespace Optics;

namespace {

bool hasOption( const Module &module, const std::string &name ) {
   for ( const std::string &option : module.options )
      if ( option == name )
         return true;
   return false;
}

void compareQsfpLength( Comparison &comparison, const Line &line, size_t byte, unsigned unit,
                        const char *printed, const char *medium ) {
   const Module &module = comparison.module;
   const unsigned number = comparison.file[byte];
   const std::string theirs = fmt::format( "{}{}", number * unit, printed );
   if ( line.value != theirs )
      return comparison.wrong( line, theirs );
   const double scale = std::string( printed ) == "km" ? 1000 : 1;
   if ( lengthOf( module, medium ) == number * unit * scale )
      return comparison.same( line );
   if ( comparison.file[147] >> 4 >= 0x0A )
      return comparison.differs( line, "ethtool shows lengths of fibre that a cable has not" );
   if ( number == 255 )
      return comparison.differs( line, "255 is more than 254 units" );
   if ( byte == 146 && lengthOf( module, "OM4" ) == number * 2 )
      return comparison.differs(
         line, "byte 146 is for OM4 in 2 m behind an 850 nm laser with a connector" );
   comparison.wrong( line, fmt::format( "{} m", lengthOf( module, medium ) ) );
}

// "2.5W max. Power consumption", "4.0W max. Power consumption,  High Power Class (> 3.5 W)
// enabled".
void comparePower( Comparison &comparison, const Line &line ) {
   const Module &module = comparison.module;
   if ( line.value.starts_with( "High Power Class" ) )
      return comparison.differs( line, "not decoded by us: whether high power is enabled" );
   const double watts = std::strtod( line.value.c_str(), nullptr );
   if ( module.powerClass == 8 )
      return comparison.differs( line, "ethtool does not know power class 8" );
   if ( module.maximumPower == watts )
      return comparison.same( line );
   if ( module.powerClass > 4u && watts < module.maximumPower.value() )
      return comparison.differs( line, "of two power classes, the higher holds" );
   comparison.wrong( line, fmt::format( "{} W", module.maximumPower.value_or( 0 ) ) );
}

void compareDescription( Comparison &comparison, const Line &line ) {
   const Module &module = comparison.module;
   if ( line.value.find( "CDR" ) == std::string::npos )
      return comparePower( comparison, line );
   comparison.expect(
      line,
      fmt::format( "{} TX, {} RX",
                   hasOption( module, "tx clock recovery" ) ? "CDR present in" : "No CDR in",
                   hasOption( module, "rx clock recovery" ) ? "CDR present in" : "No CDR in" ) );
}

// Ours is one of both: nothing while the pin decides.
void comparePowerMode( Comparison &comparison, const Line &line ) {
   const auto isLow = comparison.module.isLowPower;
   if ( line.label == "Power override" )
      comparison.expect( line, isLow ? "On" : "Off" );
   else if ( isLow )
      comparison.expect( line, *isLow ? "On" : "Off" );
   else
      comparison.differs( line, "the power set bit means nothing without the override" );
}

void compareQsfpRate( Comparison &comparison, const Line &line ) {
   if ( comparison.file[140] == 0xFF && line.value == "25500Mbps" )
      comparison.differs( line, "FFh is a rate in another byte, which ethtool does not read" );
   else
      comparison.expect( line, fmt::format( "{}Mbps", comparison.module.bitRate.value_or( 0 ) ) );
}

void compareQsfpAttenuation( Comparison &comparison, const Line &line ) {
   const double gigahertz =
      std::strtod( line.label.c_str() + std::strlen( "Attenuation at " ), nullptr );
   for ( const Module::Attenuation &one : comparison.module.attenuations )
      if ( one.gigahertz == gigahertz )
         return comparison.expect( line, fmt::format( "{}db", one.decibel ) );
   comparison.expect( line, "0db" );
}

void compareRevision( Comparison &comparison, const Line &line ) {
   const std::string &ours = comparison.module.revision;
   if ( line.value == "Unallocated" && ours == "8636 2.8 to 2.10" )
      comparison.differs( line, "ethtool has no name for a code that is newer than itself" );
   else if ( line.value == "Unallocated" && ours.starts_with( "reserved (" ) )
      comparison.same( line );
   else if ( line.value == "SFF-8436 Rev 4.8 or earlier" &&
             ours.starts_with( "8436 4.8 or older" ) )
      comparison.same( line );
   else if ( ourNameOf( line.value ) == ours )
      comparison.same( line );
   else
      comparison.wrong( line, ours );
}

// "(reserved or unknown)" stands for an extended code.
void compareType( Comparison &comparison, const Line &line ) {
   if ( line.value != "(reserved or unknown)" )
      return compareCompliance( comparison, line, "" );
   const auto &extended = comparison.module.extendedCompliance;
   if ( !extended )
      comparison.wrong( line, "nothing" );
   else if ( extended->name.starts_with( "reserved" ) )
      comparison.same( line );
   else
      comparison.differs( line, "ethtool has no name for a code that is newer than itself" );
}

bool compareQsfpLengths( Comparison &comparison, const Line &line ) {
   if ( line.label == "Length (SMF,km)" )
      compareQsfpLength( comparison, line, 142, 1, "km", "single mode" );
   else if ( line.label == "Length (OM3 50um)" )
      compareQsfpLength( comparison, line, 143, 2, "m", "OM3" );
   else if ( line.label == "Length (OM2 50um)" )
      compareQsfpLength( comparison, line, 144, 1, "m", "OM2" );
   else if ( line.label == "Length (OM1 62.5um)" )
      compareQsfpLength( comparison, line, 145, 1, "m", "OM1" );
   else if ( line.label == "Length (Copper or Active cable)" )
      compareQsfpLength( comparison, line, 146, 1, "m", "cable" );
   else
      return false;
   return true;
}

bool compareQsfpRaw( Comparison &comparison, const Line &line ) {
   const Bytes &file = comparison.file;
   std::string codes;
   for ( size_t i = 131; i < 139; ++i )
      codes += fmt::format( "{}0x{:02x}", i == 131 ? "" : " ", file[i] );
   if ( line.label == "Transceiver codes" )
      comparison.expect( line, codes );
   else if ( line.label == "Extended identifier" )
      comparison.expect( line, fmt::format( "0x{:02x}", file[129] ) );
   else if ( line.label == "Rate identifier" )
      comparison.expect( line,
                         fmt::format( "0x{:02x}", ( file[141] & 0xFC ) |
                                                     comparison.module.rateIdentifier->number ) );
   else
      return false;
   return true;
}

} // namespace

bool compareQsfp( Comparison &comparison, const Line &line ) {
   const Module &module = comparison.module;
   if ( compareQsfpRaw( comparison, line ) || compareQsfpLengths( comparison, line ) )
      return true;
   if ( line.label == "Extended identifier description" )
      compareDescription( comparison, line );
   else if ( line.label == "Power set" || line.label == "Power override" )
      comparePowerMode( comparison, line );
   else if ( line.label == "Transceiver type" )
      compareType( comparison, line );
   else if ( line.label == "BR, Nominal" )
      compareQsfpRate( comparison, line );
   else if ( line.label == "Transmitter technology" )
      compareCode( comparison, line, module.technology, 4 );
   else if ( line.label == "Laser wavelength" )
      comparison.expect( line, fmt::format( "{:.3f}nm", module.wavelength.value_or( 0 ) ) );
   else if ( line.label == "Laser wavelength tolerance" )
      comparison.expect( line,
                         fmt::format( "{:.3f}nm", module.wavelengthTolerance.value_or( 0 ) ) );
   else if ( line.label.starts_with( "Attenuation at " ) )
      compareQsfpAttenuation( comparison, line );
   else if ( line.label == "Revision Compliance" )
      compareRevision( comparison, line );
   else if ( line.label == "Alarm/warning flags implemented" )
      comparison.differs( line, "SFF-8636 has no bit that says whether it has flags" );
   else
      return false;
   return true;
}

} // namespace OpticsTest
