#include "support/TempFolder.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

TempFolder::TempFolder() {
   std::string name = ( std::filesystem::temp_directory_path() / "orbis-host-XXXXXX" ).string();
   path_ = ::mkdtemp( name.data() );
}

TempFolder::~TempFolder() { std::filesystem::remove_all( path_ ); }

// Another process may read the file at any time, so it must appear with its whole text.
void TempFolder::write( const std::string &name, const std::string &text ) const {
   std::ofstream( path_ / ( name + ".new" ), std::ios::binary ) << text;
   std::filesystem::rename( path_ / ( name + ".new" ), path_ / name );
}

void TempFolder::remove( const std::string &name ) const {
   std::filesystem::remove( path_ / name );
}

std::string TempFolder::read( const std::string &name ) const {
   std::ifstream file( path_ / name, std::ios::binary );
   return { std::istreambuf_iterator<char>( file ), {} };
}
