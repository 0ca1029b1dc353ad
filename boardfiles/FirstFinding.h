#pragma once

#include "boardfiles/JsonFile.h"
#include "boardfiles/SchemaTexts.h"

#include <rapidjson/document.h>
#include <rapidjson/pointer.h>

#include <optional>
#include <string>
#include <string_view>

namespace BoardFiles {

// The first thing that a schema has against a value.
struct SchemaFinding {
   rapidjson::Pointer place; // below the value that was checked
   std::string keyword;      // of the schema
   std::string reason;
};
std::optional<SchemaFinding> findAgainst( const rapidjson::Value &schema,
                                          const rapidjson::Value & );

std::string asText( const rapidjson::Pointer & );

} // namespace BoardFiles
