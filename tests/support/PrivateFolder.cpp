#include "PrivateFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <thread>

namespace TestSupport {

PrivateFolder::PrivateFolder() {
   std::string name = ( std::filesystem::temp_directory_path() / "orbis-test-XXXXXX" ).string();
   if ( !mkdtemp( name.data() ) )
      throw std::runtime_error( "mkdtemp" );
   path_ = name;
}

PrivateFolder::~PrivateFolder() { std::filesystem::remove_all( path_ ); }

// Another process may read the file at any time.
std::string PrivateFolder::write( const std::string &name, const std::string &text ) const {
   std::ofstream( file( name + ".new" ), std::ios::binary ) << text;
   std::filesystem::rename( file( name + ".new" ), file( name ) );
   return file( name );
}

void PrivateFolder::remove( const std::string &name ) const {
   std::filesystem::remove( path_ / name );
}

std::string PrivateFolder::read( const std::string &name ) const {
   std::ifstream stream( file( name ), std::ios::binary );
   return { std::istreambuf_iterator<char>( stream ), {} };
}

size_t PrivateFolder::waitFor( const std::string &name, const std::string &text,
                               size_t start ) const {
   const auto end = std::chrono::steady_clock::now() + std::chrono::seconds( 20 );
   do {
      const size_t found = read( name ).find( text, start );
      if ( found != std::string::npos )
         return found + text.size();
      std::this_thread::sleep_for( std::chrono::milliseconds( 5 ) );
   } while ( std::chrono::steady_clock::now() < end );
   ADD_FAILURE() << "no \"" << text << "\" in " << name << ":\n" << read( name );
   return start;
}

} // namespace TestSupport
