#pragma once

#include "boardfiles/Finding.h"
#include "boardfiles/SchemaTexts.h"

#include <map>
#include <memory>
#include <rapidjson/document.h>
#include <rapidjson/schema.h>
#include <string>
#include <string_view>

namespace BoardFiles {

// One definition of a JSON Schema, ready to check values with.
class Schema {
 public:
   // Takes "#/definitions/DEFINITION" of a schema's text as the root.
   Schema( std::string_view text, const std::string &definition );

   // Reports everything that doesn't fit, not only what comes first.
   void check( const rapidjson::Value &value, const Place &place, Findings &findings ) const;

 private:
   rapidjson::Document source_;
   std::unique_ptr<rapidjson::SchemaDocument> compiled_;
};

// A schema for a list whose elements say by "type" which definition they follow. The definition
// "element" is for those that don't.
class ListSchema {
 public:
   explicit ListSchema( std::string_view text );

   void check( const rapidjson::Value &list, const Place &place, Findings &findings ) const;

 private:
   Schema element_;
   std::map<std::string, Schema, std::less<>> byType_;
};

} // namespace BoardFiles
