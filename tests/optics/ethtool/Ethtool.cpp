#include "Ethtool.h"

#include "PrivateFolder.h"
#include "StartedProgram.h"

#include <filesystem>
#include <fmt/format.h>
#include <linux/ethtool.h>
#include <sstream>

namespace OpticsTest {

namespace {

std::string trimmed( const std::string &text ) {
   const size_t first = text.find_first_not_of( " \t" );
   return first == std::string::npos
             ? ""
             : text.substr( first, text.find_last_not_of( ' ' ) - first + 1 );
}

std::string programPath() {
   for ( const char *path : { "/usr/sbin/ethtool", "/sbin/ethtool" } )
      if ( std::filesystem::exists( path ) )
         return path;
   return "";
}

std::vector<Line> linesIn( const std::string &output ) {
   std::vector<Line> lines;
   std::istringstream text( output );
   for ( std::string one; std::getline( text, one ); ) {
      // A technology that it has no name for is without the end of its line.
      const size_t next = one.find( '\t', 1 );
      if ( next != std::string::npos ) {
         text.seekg( -static_cast<std::streamoff>( one.size() - next + ( text.eof() ? 0 : 1 ) ),
                     std::ios::cur );
         one.resize( next );
      }
      const size_t colon = one.find( " : " );
      if ( colon == std::string::npos )
         throw std::runtime_error( "ethtool prints a line without a label: " + one );
      lines.push_back( { trimmed( one.substr( 0, colon ) ), one.substr( colon + 3 ) } );
   }
   return lines;
}

} // namespace

bool isEthtoolThere() { return !programPath().empty(); }

std::vector<Line> ethtoolOn( const Bytes &file, Optics::Standard standard ) {
   const TestSupport::PrivateFolder folder;
   const std::string path = folder.write( "module", std::string( file.begin(), file.end() ) );
   const unsigned type =
      standard == Optics::Standard::Sff8472 ? ETH_MODULE_SFF_8472 : ETH_MODULE_SFF_8436;
   TestSupport::ProgramSettings settings;
   settings.environment = { fmt::format( "LD_PRELOAD={}", PRELOADED_MODULE ),
                            fmt::format( "ORBIS_MODULE={}", path ),
                            fmt::format( "ORBIS_MODULE_TYPE={}", type ) };
   if ( standard == Optics::Standard::Cmis ) // whose lanes it shows only then
      settings.environment.emplace_back( "ORBIS_MODULE_NETLINK=1" );
   TestSupport::StartedProgram program( { programPath(), "-m", "eth0" }, settings );
   if ( const int code = program.wait() )
      throw std::runtime_error( fmt::format( "ethtool ends with {}: {}", code, program.errors() ) );
   return linesIn( program.output() );
}

} // namespace OpticsTest
