// What ethtool prints of CMIS alone.
#include "Comparison.h"

#include <fmt/format.h>

namespace OpticsTest {

using namespace Optics;

namespace {

std::string option( const Module &module, const std::string &name ) {
   for ( const std::string &one : module.options )
      if ( one == name )
         return "Yes";
   return "No";
}

bool compareCmisLengths( Comparison &comparison, const Line &line ) {
   const Module &module = comparison.module;
   const auto metres = [&]( const char *medium ) {
      comparison.expect( line, fmt::format( "{:.0f}m", lengthOf( module, medium ) ) );
   };
   if ( line.label == "Cable assembly length" && comparison.file[202] == 0xFF )
      comparison.expect( line, module.lengths.at( 0 ).orMore ? "> 6.3km" : "6300.00m" );
   else if ( line.label == "Cable assembly length" )
      comparison.expect( line, fmt::format( "{:.2f}m", lengthOf( module, "cable" ) ) );
   else if ( line.label == "Length (SMF)" && comparison.file[page01OfCmis + 132] >> 6 == 2 &&
             line.value == fmt::format( "{:.2f}km", lengthOf( module, "single mode" ) / 10000 ) )
      comparison.differs( line, "ethtool takes the multiplier 10 of single mode fibre for 1" );
   else if ( line.label == "Length (SMF)" && comparison.file[page01OfCmis + 132] >> 6 == 3 )
      comparison.differs( line,
                          "ethtool takes the reserved multiplier of single mode fibre for 1" );
   else if ( line.label == "Length (SMF)" )
      comparison.expect( line,
                         fmt::format( "{:.2f}km", lengthOf( module, "single mode" ) / 1000 ) );
   else if ( line.label == "Length (OM5)" )
      metres( "OM5" );
   else if ( line.label == "Length (OM4)" )
      metres( "OM4" );
   else if ( line.label == "Length (OM3 50/125um)" )
      metres( "OM3" );
   else if ( line.label == "Length (OM2 50/125um)" )
      metres( "OM2" );
   else
      return false;
   return true;
}

bool compareCmisOptions( Comparison &comparison, const Line &line ) {
   static const std::map<std::string, std::string> options{
      { "Tx CDR bypass control", "tx clock recovery can be switched" },
      { "Rx CDR bypass control", "rx clock recovery can be switched" },
      { "Tx CDR", "tx clock recovery" },
      { "Rx CDR", "rx clock recovery" },
   };
   const auto found = options.find( line.label );
   if ( found == options.end() )
      return false;
   comparison.expect( line, option( comparison.module, found->second ) );
   return true;
}

void compareCmisAttenuation( Comparison &comparison, const Line &line ) {
   const Module &module = comparison.module;
   const double gigahertz =
      std::strtod( line.label.c_str() + std::strlen( "Attenuation at " ), nullptr );
   for ( const Module::Attenuation &one : module.attenuations )
      if ( one.gigahertz == gigahertz )
         return comparison.expect( line, fmt::format( "{}db", one.decibel ) );
   if ( module.technology->number > 0x0F )
      comparison.differs( line, "ethtool takes codes above 0Fh for copper" );
   else
      comparison.expect( line, "0db" );
}

void compareCmisWavelength( Comparison &comparison, const Line &line,
                            const std::optional<double> &ours ) {
   comparison.expect( line, fmt::format( "{:.3f}nm", ours.value_or( 0 ) ) );
}

} // namespace

bool compareCmis( Comparison &comparison, const Line &line ) {
   const Module &module = comparison.module;
   if ( compareCmisLengths( comparison, line ) || compareCmisOptions( comparison, line ) )
      return true;
   if ( line.label == "Power class" )
      comparison.expect( line, fmt::format( "{}", module.powerClass.value() ) );
   else if ( line.label == "Max power" )
      comparison.expect( line, fmt::format( "{:.2f}W", module.maximumPower.value_or( 0 ) ) );
   else if ( line.label == "Transmitter technology" )
      compareCode( comparison, line, module.technology );
   else if ( line.label == "Laser wavelength" )
      compareCmisWavelength( comparison, line, module.wavelength );
   else if ( line.label == "Laser wavelength tolerance" )
      compareCmisWavelength( comparison, line, module.wavelengthTolerance );
   else if ( line.label.starts_with( "Attenuation at " ) )
      compareCmisAttenuation( comparison, line );
   else if ( line.label == "Revision compliance" )
      comparison.expect( line, "Rev. " + module.revision.substr( 5 ) );
   else if ( line.label == "Module State" )
      compareCode( comparison, line, module.state );
   else if ( line.label == "Module Fault Cause" )
      compareCode( comparison, line, module.faultCause );
   else if ( line.label.starts_with( "LowPwr" ) )
      comparison.differs( line, "not decoded by us: what the host has asked for" );
   else
      return false;
   return true;
}

} // namespace OpticsTest
