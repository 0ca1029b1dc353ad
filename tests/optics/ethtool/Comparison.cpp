#include "Comparison.h"

#include <fmt/format.h>

namespace OpticsTest {

using namespace Optics;

Comparison::Comparison( const Bytes &bytes, Standard standard )
   : file( bytes ), module( decode( imageOfFile( bytes, standard ), standard ) ) {}

void Comparison::same( const Line & ) { ++compared; }

void Comparison::differs( const Line &, const std::string &reason ) {
   ++compared;
   ++differences[reason];
}

void Comparison::wrong( const Line &line, const std::string &ours ) {
   mistakes.push_back(
      fmt::format( "{}: ethtool says \"{}\", we \"{}\"", line.label, line.value, ours ) );
}

void Comparison::expect( const Line &line, const std::string &ours ) {
   if ( line.value == ours )
      same( line );
   else
      wrong( line, ours );
}

void compare( Comparison &comparison, const std::vector<Line> &lines ) {
   const auto ofStandard = [&]( const Line &line ) {
      switch ( comparison.module.standard ) {
      case Standard::Sff8472:
         return compareSfp( comparison, line );
      case Standard::Sff8636:
         return compareQsfp( comparison, line );
      case Standard::Cmis:
         return compareCmis( comparison, line );
      }
      return false;
   };
   for ( const Line &line : lines )
      if ( !compareMonitor( comparison, line ) && !ofStandard( line ) &&
           !compareCommon( comparison, line ) )
         comparison.mistakes.push_back( fmt::format( "{}: no label that is known", line.label ) );
   findMissing( comparison );
}

} // namespace OpticsTest
