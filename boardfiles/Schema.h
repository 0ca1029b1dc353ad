#pragma once

#include "boardfiles/Json.h"
#include "boardfiles/SchemaTexts.h"

namespace BoardFiles {

// A JSON Schema (draft 4, as far as boards/*.schema.json use it), ready to check values with.
class Schema {
 public:
   // Throws std::logic_error for a text that isn't JSON.
   explicit Schema( std::string_view text );

   // Reports everything that doesn't fit, not only what comes first. Of several branches (anyOf,
   // oneOf) the value itself names one by the key whose texts tell the branches apart ("type",
   // "chip"), and only that one's rules are applied. A key that a rule doesn't list is an error
   // where "additionalProperties" is false, and a warning elsewhere: its reader ignores it.
   void check( const Json &value, Findings &findings ) const;
   // The same against "#/definitions/DEFINITION".
   void check( const Json &value, std::string_view definition, Findings &findings ) const;

   const Json &root() const { return root_; }

 private:
   Json root_;
};

} // namespace BoardFiles
