#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace TestSupport {

// A temporary folder for one test. The destructor removes it.
class PrivateFolder {
 public:
   PrivateFolder() {
      if ( !mkdtemp( path_.data() ) )
         throw std::runtime_error( "mkdtemp" );
   }
   ~PrivateFolder() { std::filesystem::remove_all( path_ ); }
   PrivateFolder( const PrivateFolder & ) = delete;
   PrivateFolder &operator=( const PrivateFolder & ) = delete;

   std::string file( const std::string &name ) const { return path_ + "/" + name; }
   // Writes a file and returns its path.
   std::string write( const std::string &name, const std::string &text ) const {
      std::ofstream( file( name ) ) << text;
      return file( name );
   }
   // The content of a file; empty if it does not exist.
   std::string read( const std::string &name ) const {
      std::ifstream stream( file( name ) );
      return { std::istreambuf_iterator<char>( stream ), {} };
   }

 private:
   std::string path_ = "/tmp/orbis-test-XXXXXX";
};

} // namespace TestSupport
