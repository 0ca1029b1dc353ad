// Codes, texts and lists, which are alike in the three standards.
#include "Comparison.h"

#include <algorithm>
#include <fmt/format.h>

namespace OpticsTest {

using namespace Optics;

namespace {

// ethtool shows what is no ASCII as "_", and so also the zeros that some makers pad with.
std::string asEthtoolShows( const std::string &ours ) {
   std::string text;
   for ( size_t i = 0; i < ours.size(); ++i ) {
      const bool isEscape = ours.compare( i, 2, "\\x" ) == 0;
      text += isEscape ? '_' : ours[i];
      i += isEscape ? 3 : 0;
   }
   return text;
}

std::string withoutPadding( std::string text ) {
   while ( !text.empty() && ( text.back() == '_' || text.back() == ' ' ) )
      text.pop_back();
   return text;
}

void compareText( Comparison &comparison, const Line &line, const std::string &ours ) {
   if ( withoutPadding( line.value ) == withoutPadding( asEthtoolShows( ours ) ) )
      comparison.same( line );
   else
      comparison.wrong( line, ours );
}

// Bits that ethtool passes over, at least in one of the standards.
bool isUnknownToEthtool( const Module &module, const std::string &compliance ) {
   if ( module.standard == Standard::Sff8472 )
      return compliance == "FC 1600 MB/s" || compliance == "FC 3200 MB/s";
   return compliance == "FC 3200 MB/s" || compliance == "SAS 12 Gb/s" ||
          compliance == "SAS 24 Gb/s" || compliance == "FC shortwave laser, linear receiver (SA)" ||
          compliance.starts_with( "InfiniBand " );
}

bool hasUnlikelyWord( const Bytes &file ) {
   for ( const size_t place : { 22u, 26u } )
      if ( file[place] == file[place + 1] && ( file[place] == 0x00 || file[place] == 0xFF ) )
         return true;
   return false;
}

bool has( const std::vector<std::string> &names, const std::string &name ) {
   return std::find( names.begin(), names.end(), name ) != names.end();
}

} // namespace

void compareCode( Comparison &comparison, const Line &line, const std::optional<Code> &ours,
                  unsigned shift ) {
   if ( !ours )
      return comparison.wrong( line, "nothing" );
   const std::string number = fmt::format( "0x{:02x}", ours->number << shift );
   if ( line.value.substr( 0, 4 ) != number )
      return comparison.wrong( line, number );
   const std::string rest = line.value.substr( 4 );
   const std::string name = rest.size() > 3 ? rest.substr( 2, rest.size() - 3 ) : "";
   const bool isOursReserved =
      ours->name.starts_with( "reserved (" ) || ours->name.starts_with( "vendor specific (" );
   if ( name.empty() || name == "reserved or unknown" ) {
      if ( isOursReserved )
         return comparison.same( line );
      return comparison.differs( line, "ethtool has no name for a code that is newer than itself" );
   }
   if ( name == ours->name || ourNameOf( name ) == ours->name )
      return comparison.same( line );
   comparison.wrong( line, ours->name );
}

void compareCompliance( Comparison &comparison, const Line &line, const std::string &prefix ) {
   const Module &module = comparison.module;
   if ( const auto ours = ourNameOf( line.value ); ours && has( module.compliance, *ours ) ) {
      comparison.seen.insert( *ours );
      return comparison.same( line );
   }
   const std::string extended =
      line.value.starts_with( prefix ) ? line.value.substr( prefix.size() ) : "";
   const auto number = extendedComplianceOf( extended );
   if ( number && module.extendedCompliance && module.extendedCompliance->number == *number ) {
      if ( !module.extendedCompliance->name.starts_with( "reserved" ) )
         return comparison.same( line );
      if ( *number >= 0x50 && *number <= 0x55 )
         return comparison.differs( line,
                                    "ethtool has codes of Fibre Channel that were withdrawn" );
   }
   if ( line.value == "FC: Copper FC-BaseT" || line.value == "40G OTN (OTU3B/OTU3C)" )
      return comparison.differs( line, "not decoded by us: FC-BaseT, OTU3B and OTU3C" );
   comparison.wrong( line, "nothing" );
}

double lengthOf( const Module &module, const std::string &medium ) {
   for ( const Length &length : module.lengths )
      if ( length.medium == medium )
         return length.metres;
   return 0;
}

bool compareCommon( Comparison &comparison, const Line &line ) {
   const Module &module = comparison.module;
   if ( line.label == "Identifier" )
      compareCode( comparison, line, module.identifier );
   else if ( line.label == "Connector" )
      compareCode( comparison, line, module.connector );
   else if ( line.label == "Encoding" )
      compareCode( comparison, line, module.encoding );
   else if ( line.label == "Vendor name" )
      compareText( comparison, line, module.vendor );
   else if ( line.label == "Vendor PN" )
      compareText( comparison, line, module.partNumber );
   else if ( line.label == "Vendor rev" )
      compareText( comparison, line, module.vendorRevision );
   else if ( line.label == "Vendor SN" )
      compareText( comparison, line, module.serial );
   else if ( line.label == "Date code" )
      compareText( comparison, line, module.dateCode );
   else if ( line.label == "CLEI code" )
      compareText( comparison, line, module.clei );
   else if ( line.label == "Vendor OUI" )
      comparison.expect( line, module.oui.empty() ? "00:00:00" : module.oui );
   else
      return false;
   return true;
}

void findMissing( Comparison &comparison ) {
   const Module &module = comparison.module;
   for ( const Monitor &monitor : module.monitors ) {
      const bool isOfEthtool = monitor.quantity <= Quantity::RxPower;
      const std::string name = fmt::format( "{} {}", nameOf( monitor.quantity ), monitor.lane );
      if ( !isOfEthtool || comparison.seen.contains( name ) )
         continue;
      if ( module.standard == Standard::Sff8636 && hasUnlikelyWord( comparison.file ) )
         ++comparison.differences["ethtool takes a temperature or voltage of 0000h or FFFFh for a "
                                  "module without monitors"];
      else
         comparison.mistakes.push_back( fmt::format( "ethtool has no {}", name ) );
   }
   for ( const std::string &name : module.compliance )
      if ( !comparison.seen.contains( name ) && !isUnknownToEthtool( module, name ) )
         comparison.mistakes.push_back( fmt::format( "ethtool has no compliance {}", name ) );
}

} // namespace OpticsTest
