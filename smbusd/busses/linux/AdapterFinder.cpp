#include "smbusd/busses/linux/AdapterFinder.h"

#include "smbus/RootBusId.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <optional>
#include <vector>

namespace Smbusd::Linux {

namespace {

namespace fs = std::filesystem;

constexpr unsigned maxNumber = 0xFFFFF; // of a minor number in Linux

std::optional<unsigned> numberOf( const fs::path &entry ) {
   const std::string name = entry.filename();
   if ( !name.starts_with( "i2c-" ) )
      return {};
   return Bus::parseNumber( std::string_view( name ).substr( 4 ), maxNumber );
}

std::string folderOf( const Places &places ) { return places.sys + "/bus/i2c/devices"; }

std::vector<unsigned> allAdapters( const Places &places ) {
   std::vector<unsigned> numbers;
   std::error_code ignored;
   for ( const auto &entry : fs::directory_iterator( folderOf( places ), ignored ) ) {
      if ( const auto number = numberOf( entry.path() ) )
         numbers.push_back( *number );
   }
   std::sort( numbers.begin(), numbers.end() );
   return numbers;
}

unsigned onlyOne( const std::vector<unsigned> &found, const std::string &what ) {
   if ( found.empty() )
      throw AdapterError( fmt::format( "there is no adapter {}", what ) );
   if ( found.size() > 1 )
      throw AdapterError( fmt::format( "{} adapters {}: numbers {}", found.size(), what,
                                       fmt::join( found, ", " ) ) );
   return found.front();
}

struct Finder {
   unsigned operator()( const BoardFiles::AdapterNumber &wanted ) const {
      if ( !fs::exists( fmt::format( "{}/i2c-{}", folderOf( places ), wanted.number ) ) )
         throw AdapterError( fmt::format( "there is no adapter with number {}", wanted.number ) );
      return wanted.number;
   }

   unsigned operator()( const BoardFiles::AdapterName &wanted ) const {
      std::vector<unsigned> found;
      for ( const unsigned number : allAdapters( places ) ) {
         if ( adapterName( number, places ) == wanted.name )
            found.push_back( number );
      }
      return onlyOne( found, fmt::format( "named \"{}\"", wanted.name ) );
   }

   unsigned operator()( const BoardFiles::AdapterPath &wanted ) const {
      std::error_code error;
      const fs::path root = fs::canonical( wanted.path, error );
      if ( error )
         throw AdapterError( fmt::format( "{}: {}", wanted.path, error.message() ) );
      if ( const auto number = numberOf( root ) )
         return *number;
      std::vector<unsigned> found;
      auto entry = fs::recursive_directory_iterator(
         root, fs::directory_options::skip_permission_denied, error );
      for ( ; entry != fs::recursive_directory_iterator(); entry.increment( error ) ) {
         const auto number = numberOf( entry->path() );
         if ( number )
            found.push_back( *number );
         // The kernel shows the channels of a multiplexer as adapters inside the adapter; skip
         // them.
         if ( number || entry.depth() >= maxDepth )
            entry.disable_recursion_pending();
      }
      std::sort( found.begin(), found.end() );
      return onlyOne( found, fmt::format( "in {}", wanted.path ) );
   }

   static constexpr int maxDepth = 3; // a USB device's adapter is in one of its interfaces
   const Places &places;
};

} // namespace

unsigned findAdapter( const BoardFiles::WantedAdapter &wanted, const Places &places ) {
   return std::visit( Finder{ places }, wanted );
}

std::string adapterName( unsigned number, const Places &places ) {
   std::ifstream file( fmt::format( "{}/i2c-{}/name", folderOf( places ), number ) );
   std::string name;
   std::getline( file, name );
   return name;
}

std::string describeAdapter( unsigned number, const Places &places ) {
   return fmt::format( "{}/i2c-{} ({})", places.dev, number, adapterName( number, places ) );
}

} // namespace Smbusd::Linux
