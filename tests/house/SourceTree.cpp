#include "SourceTree.h"

#include <fstream>
#include <regex>
#include <sstream>

namespace House {

namespace {

bool isSource( const std::string &path ) {
   return path.ends_with( ".h" ) || path.ends_with( ".cpp" ) || path.ends_with( ".proto" );
}

bool isOfAPage( const std::string &path ) {
   return path.ends_with( ".js" ) || path.ends_with( ".css" ) || path.ends_with( ".html" );
}

std::string textOf( const std::filesystem::path &path ) {
   std::ostringstream text;
   text << std::ifstream( path ).rdbuf();
   return text.str();
}

bool isSkipped( const std::filesystem::path &folder ) {
   return folder.filename().string().starts_with( "." ) || folder.filename() == "build" ||
          exists( folder / "CMakeCache.txt" );
}

} // namespace

std::vector<std::string> includedNames( const std::string &text ) {
   static const std::regex line( R"(^\s*(?:#\s*include|import(?:\s+public)?)\s*["<]([^">]+)[">])" );
   std::vector<std::string> names;
   std::istringstream lines( text );
   for ( std::string each; std::getline( lines, each ); ) {
      std::smatch found;
      if ( std::regex_search( each, found, line ) )
         names.push_back( found[1] );
   }
   return names;
}

std::string folderOf( const std::string &path ) {
   const size_t slash = path.rfind( '/' );
   return slash == std::string::npos ? "" : path.substr( 0, slash );
}

std::string roomOf( const std::string &path ) {
   const size_t slash = path.find( '/' );
   return slash == std::string::npos ? "" : path.substr( 0, slash );
}

bool isHeader( const std::string &path ) { return path.ends_with( ".h" ); }

SourceTree::SourceTree( const std::map<std::string, std::string> &texts ) {
   for ( const auto &[path, text] : texts )
      files_[path].text = text;
   for ( auto &[path, file] : files_ ) {
      if ( !isSource( path ) )
         continue;
      for ( const std::string &name : includedNames( file.text ) ) {
         if ( const std::string included = find( path, name ); !included.empty() )
            file.includes.push_back( included );
      }
   }
}

std::string SourceTree::find( const std::string &includer, std::string name ) const {
   if ( name.ends_with( ".pb.h" ) )
      name.replace( name.size() - 4, 4, "proto" );
   // A quoted name is looked for beside the includer, then in the -I folders: those of the project
   // are its root, platform/, and for tests a folder above them.
   for ( std::string folder = folderOf( includer ); !folder.empty(); folder = folderOf( folder ) ) {
      if ( has( folder + "/" + name ) )
         return folder + "/" + name;
   }
   for ( const char *folder : { "", "platform/", "tests/support/" } ) {
      if ( has( folder + name ) )
         return folder + name;
   }
   return "";
}

SourceTree SourceTree::read( const std::filesystem::path &root ) {
   std::map<std::string, std::string> texts;
   for ( auto each = std::filesystem::recursive_directory_iterator( root );
         each != std::filesystem::recursive_directory_iterator(); ++each ) {
      const std::filesystem::path path = each->path();
      if ( each->is_directory() ) {
         if ( isSkipped( path ) )
            each.disable_recursion_pending();
      } else if ( isSource( path ) || isOfAPage( path ) || path.filename() == "CMakeLists.txt" ) {
         texts[path.lexically_relative( root )] = textOf( path );
      }
   }
   return SourceTree( texts );
}

} // namespace House
