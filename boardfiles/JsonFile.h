#pragma once

#include <rapidjson/document.h>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace BoardFiles {

// A board file that can't be used. The text names the file, the place in it and the reason:
// "FILE:LINE:COLUMN: ..." where it doesn't parse, "FILE: /JSON/pointer: ..." elsewhere.
struct BoardError : std::runtime_error {
   using std::runtime_error::runtime_error;
   static BoardError at( const std::string &file, const std::string &pointer,
                         const std::string &reason );
};

struct JsonFile {
   std::string path;
   rapidjson::Document document;
};

// Throws BoardError.
JsonFile readJsonFile( const std::string &path );

// A value in a file, with its place. All members throw BoardError when something is not as asked.
// The file outlives it.
class JsonPlace {
 public:
   explicit JsonPlace( const JsonFile &file ) : file_( &file ), value_( &file.document ) {}

   const rapidjson::Value &value() const { return *value_; }
   const std::string &pointer() const { return pointer_; }
   [[noreturn]] void fail( const std::string &reason ) const;

   std::optional<JsonPlace> find( const char *key ) const;     // in an object
   JsonPlace member( const char *key ) const;                  // a required one
   std::vector<JsonPlace> elements() const;                    // of an array
   std::vector<JsonPlace> elementsOf( const char *key ) const; // none when the key is absent
   uint32_t number( uint32_t max = UINT32_MAX ) const;
   std::string text() const;
   bool truth() const;

 private:
   JsonPlace( const JsonFile *file, const rapidjson::Value &value, std::string pointer )
      : file_( file ), value_( &value ), pointer_( std::move( pointer ) ) {}

   const JsonFile *file_;
   const rapidjson::Value *value_;
   std::string pointer_;
};

} // namespace BoardFiles
