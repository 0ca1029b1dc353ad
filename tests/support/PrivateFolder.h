#pragma once

#include <filesystem>
#include <string>

namespace TestSupport {

// A temporary folder for one test. The destructor removes it.
class PrivateFolder {
 public:
   PrivateFolder();
   ~PrivateFolder();
   PrivateFolder( const PrivateFolder & ) = delete;
   PrivateFolder &operator=( const PrivateFolder & ) = delete;

   const std::filesystem::path &path() const { return path_; }
   std::string file( const std::string &name ) const { return path_.string() + "/" + name; }
   // Writes a file and returns its path. The file appears with its whole text.
   std::string write( const std::string &name, const std::string &text ) const;
   void remove( const std::string &name ) const;
   // The content of a file; empty if it does not exist.
   std::string read( const std::string &name ) const;
   // Waits until a file has `text` at or after `start`. Returns the position behind it; or
   // `start`, and the test fails, when it does not come.
   size_t waitFor( const std::string &name, const std::string &text, size_t start = 0 ) const;

 private:
   std::filesystem::path path_;
};

} // namespace TestSupport
