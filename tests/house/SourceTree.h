// The project's sources as text, and what they include.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace House {

// The names in the #include lines of C++ and the import lines of .proto files, in their order.
std::vector<std::string> includedNames( const std::string &text );

// "a/b" of "a/b/c.h", "" of "c.h".
std::string folderOf( const std::string &path );
// "a" of "a/b/c.h", "" of "c.h".
std::string roomOf( const std::string &path );
bool isHeader( const std::string &path );

// Paths are below the project's root.
class SourceTree {
 public:
   struct File {
      std::string text;
      std::vector<std::string> includes; // files of this tree; generated headers as their .proto
   };

   explicit SourceTree( const std::map<std::string, std::string> &texts );
   // Reads .h, .cpp, .proto and CMakeLists.txt. Skips hidden folders and builds.
   static SourceTree read( const std::filesystem::path &root );

   const std::map<std::string, File> &files() const { return files_; }
   bool has( const std::string &path ) const { return files_.contains( path ); }

 private:
   // The file of this tree that `name` means in `includer`; empty for any other header.
   std::string find( const std::string &includer, std::string name ) const;

   std::map<std::string, File> files_;
};

} // namespace House
