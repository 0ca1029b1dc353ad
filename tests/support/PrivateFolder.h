#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace TestSupport {

// A folder of its own for one test, gone with everything in it afterwards.
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
   // Writes a file and gives its path.
   std::string write( const std::string &name, const std::string &text ) const {
      std::ofstream( file( name ) ) << text;
      return file( name );
   }

 private:
   std::string path_ = "/tmp/orbis-test-XXXXXX";
};

} // namespace TestSupport
