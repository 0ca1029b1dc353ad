#pragma once

#include <filesystem>
#include <string>

// A folder for a test. The destructor removes it.
class TempFolder {
 public:
   TempFolder();
   ~TempFolder();
   TempFolder( const TempFolder & ) = delete;
   TempFolder &operator=( const TempFolder & ) = delete;

   const std::filesystem::path &path() const { return path_; }
   void write( const std::string &name, const std::string &text ) const;
   void remove( const std::string &name ) const;
   std::string read( const std::string &name ) const;

 private:
   std::filesystem::path path_;
};
