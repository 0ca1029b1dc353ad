#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
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
   // What is in a file; nothing when it isn't there.
   std::string read( const std::string &name ) const {
      std::ifstream stream( file( name ) );
      return { std::istreambuf_iterator<char>( stream ), {} };
   }

 private:
   std::string path_ = "/tmp/orbis-test-XXXXXX";
};

} // namespace TestSupport
