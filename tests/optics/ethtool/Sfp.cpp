// What ethtool prints of SFF-8472 alone.
#include "Comparison.h"

#include <fmt/format.h>

namespace OpticsTest {

using namespace Optics;

namespace {

// ethtool's number is the byte times its unit, whatever the byte is for.
void compareSfpLength( Comparison &comparison, const Line &line, size_t byte, unsigned unit,
                       const char *printed, const char *medium ) {
   const Module &module = comparison.module;
   const unsigned number = comparison.file[byte];
   const std::string theirs = fmt::format( "{}{}", number * unit, printed );
   if ( line.value != theirs )
      return comparison.wrong( line, theirs );
   const double scale = std::string( printed ) == "km" ? 1000 : 1;
   const double ours = lengthOf( module, medium );
   if ( ours == number * unit * scale )
      return comparison.same( line );
   if ( comparison.file[8] & 0x0C )
      return comparison.differs( line, "ethtool shows lengths of fibre that a cable has not" );
   if ( number == 255 )
      return comparison.differs( line, "255 is more than 254 units" );
   if ( byte == 14 && comparison.file[15] != 0 )
      return comparison.differs( line,
                                 "both bytes are for single mode fibre, of which we show one" );
   if ( byte == 15 && number == 0 )
      return comparison.differs( line,
                                 "both bytes are for single mode fibre, of which we show one" );
   if ( byte == 18 && lengthOf( module, "OM4" ) == number * 10 )
      return comparison.differs( line,
                                 "byte 18 is for OM4 in tens of metres in a module for fibre" );
   comparison.wrong( line, fmt::format( "{} m", ours ) );
}

// ethtool has a name for one bit alone.
void compareSfpCable( Comparison &comparison, const Line &line, bool isActive ) {
   const uint8_t byte = comparison.file[60];
   unsigned found = 0;
   for ( const std::string &name : comparison.module.compliance ) {
      const bool isOfCable = name == "SFF-8431 appendix E" || name == "FC-PI-4 appendix H" ||
                             name == "SFF-8431 limiting" || name == "FC-PI-4 limiting";
      if ( isOfCable )
         comparison.seen.insert( name ), ++found;
   }
   if ( ( comparison.file[8] & 0x0C ) == 0x0C )
      return comparison.differs( line, "of a cable that is both, ethtool takes the passive one" );
   const unsigned mask = isActive ? 0x0F : 0x03;
   const auto expected = static_cast<unsigned>( __builtin_popcount( byte & mask ) );
   if ( line.value.substr( 0, 4 ) != fmt::format( "0x{:02x}", byte ) || found != expected )
      return comparison.wrong( line, fmt::format( "{} names", found ) );
   for ( const char *one : { "SFF-8431 appendix E", "SFF-8431 limiting", "unspecified" } )
      if ( line.value.find( one ) != std::string::npos )
         return comparison.same( line );
   comparison.differs( line, "ethtool names these bits only one by one" );
}

void compareRateIdentifier( Comparison &comparison, const Line &line ) {
   if ( comparison.module.rateIdentifier->number == 3 &&
        line.value == "0x03 (8/4/2G Independent Rx & Tx Rate_Select)" )
      comparison.differs( line, "both directions have rate identifier 06h; ethtool takes 03h" );
   else
      compareCode( comparison, line, comparison.module.rateIdentifier );
}

void compareSfpOption( Comparison &comparison, const Line &line ) {
   const unsigned powerClass = comparison.module.powerClass.value();
   if ( line.value.starts_with( "Power level " ) ) {
      const unsigned theirs = static_cast<unsigned>( line.value[12] - '0' );
      if ( powerClass == theirs )
         return comparison.same( line );
      if ( powerClass > theirs )
         return comparison.differs( line, "of several power levels, the highest holds" );
      return comparison.wrong( line, fmt::format( "power level {}", powerClass ) );
   }
   const auto ours = ourNameOf( line.value );
   for ( const std::string &option : comparison.module.options )
      if ( option == ours ) {
         comparison.seen.insert( "option " + option );
         return comparison.same( line );
      }
   comparison.wrong( line, "nothing" );
}

void compareDiagnostics( Comparison &comparison, const Line &line ) {
   const Module &module = comparison.module;
   if ( line.value == "Yes" && !module.hasDiagnostics && ( comparison.file[92] & 0x44 ) == 0x44 )
      comparison.differs( line, "ethtool reads A2h without the change of address" );
   else
      comparison.expect( line, module.hasDiagnostics ? "Yes" : "No" );
}

void compareFlagsOption( Comparison &comparison, const Line &line ) {
   bool isThere = false;
   for ( const std::string &option : comparison.module.options )
      isThere = isThere || option == "alarm and warning flags";
   comparison.expect( line, isThere ? "Yes" : "No" );
}

std::string hex( const Bytes &file, size_t first, size_t size ) {
   std::string text;
   for ( size_t i = 0; i < size; ++i )
      text += fmt::format( "{}0x{:02x}", i ? " " : "", file[first + i] );
   return text;
}

bool compareSfpRaw( Comparison &comparison, const Line &line ) {
   if ( line.label == "Transceiver codes" )
      comparison.expect( line, hex( comparison.file, 3, 8 ) + " " + hex( comparison.file, 36, 1 ) );
   else if ( line.label == "Option values" )
      comparison.expect( line, hex( comparison.file, 64, 2 ) );
   else if ( line.label == "Extended identifier" || line.label.starts_with( "BR margin" ) )
      comparison.differs( line, "not decoded by us: extended identifier, margins of the rate" );
   else
      return false;
   return true;
}

bool compareSfpLengths( Comparison &comparison, const Line &line ) {
   if ( line.label == "Length (SMF,km)" )
      compareSfpLength( comparison, line, 14, 1, "km", "single mode" );
   else if ( line.label == "Length (SMF)" )
      compareSfpLength( comparison, line, 15, 100, "m", "single mode" );
   else if ( line.label == "Length (50um)" )
      compareSfpLength( comparison, line, 16, 10, "m", "OM2" );
   else if ( line.label == "Length (62.5um)" )
      compareSfpLength( comparison, line, 17, 10, "m", "OM1" );
   else if ( line.label == "Length (Copper)" )
      compareSfpLength( comparison, line, 18, 1, "m",
                        comparison.file[8] & 0x0C ? "cable" : "copper" );
   else if ( line.label == "Length (OM3)" )
      compareSfpLength( comparison, line, 19, 10, "m", "OM3" );
   else
      return false;
   return true;
}

} // namespace

bool compareSfp( Comparison &comparison, const Line &line ) {
   const Module &module = comparison.module;
   if ( compareSfpRaw( comparison, line ) || compareSfpLengths( comparison, line ) )
      return true;
   if ( line.label == "Transceiver type" )
      compareCompliance( comparison, line, "Extended: " );
   else if ( line.label == "Rate identifier" )
      compareRateIdentifier( comparison, line );
   else if ( line.label == "BR, Nominal" )
      comparison.expect( line, fmt::format( "{}MBd", module.bitRate.value_or( 0 ) ) );
   else if ( line.label == "Laser wavelength" )
      comparison.expect( line, fmt::format( "{}nm", module.wavelength.value_or( 0 ) ) );
   else if ( line.label == "Passive Cu cmplnce." )
      compareSfpCable( comparison, line, false );
   else if ( line.label == "Active Cu cmplnce." )
      compareSfpCable( comparison, line, true );
   else if ( line.label == "Option" )
      compareSfpOption( comparison, line );
   else if ( line.label == "Optical diagnostics support" )
      compareDiagnostics( comparison, line );
   else if ( line.label == "Alarm/warning flags implemented" )
      compareFlagsOption( comparison, line );
   else
      return false;
   return true;
}

} // namespace OpticsTest
