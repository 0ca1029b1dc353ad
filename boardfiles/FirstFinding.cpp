#include "boardfiles/FirstFinding.h"

#include <fmt/format.h>
#include <rapidjson/schema.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <vector>

namespace BoardFiles {

namespace {

using rapidjson::Value;

std::string asText( const Value &value ) {
   rapidjson::StringBuffer buffer;
   rapidjson::Writer<rapidjson::StringBuffer> writer( buffer );
   value.Accept( writer );
   return { buffer.GetString(), buffer.GetSize() };
}

std::string missingKey( const Value &rule, const Value &object ) {
   for ( const Value &key : rule["required"].GetArray() ) {
      if ( !object.HasMember( key ) )
         return key.GetString();
   }
   return {};
}

// The keys of which the rule wants one.
std::string alternatives( const Value &rule ) {
   std::vector<std::string> keys;
   for ( const Value &alternative : rule["oneOf"].GetArray() )
      keys.push_back( fmt::format( "\"{}\"", alternative["required"][0].GetString() ) );
   return fmt::format( "{}", fmt::join( keys, ", " ) );
}

// What the rule's keyword has against the value, in words.
std::string explain( const Value &rule, const std::string &keyword, const Value &value ) {
   if ( keyword == "additionalProperties" )
      return "unknown key"; // the place is the key's own
   if ( keyword == "required" )
      return fmt::format( "has no \"{}\"", missingKey( rule, value ) );
   if ( keyword == "type" )
      return fmt::format( "{} is no {}", asText( value ), rule["type"].GetString() );
   if ( keyword == "minimum" || keyword == "maximum" )
      return fmt::format( "{} is {} {}", asText( value ), keyword == "minimum" ? "below" : "above",
                          asText( rule[keyword.c_str()] ) );
   if ( keyword == "oneOf" )
      return fmt::format( "has to have one of {}, and only one", alternatives( rule ) );
   if ( keyword == "enum" )
      return fmt::format( "{} is none of {}", asText( value ), asText( rule["enum"] ) );
   return fmt::format( "{} is against \"{}\"", asText( value ), keyword );
}

} // namespace

std::string asText( const rapidjson::Pointer &pointer ) {
   rapidjson::StringBuffer buffer;
   pointer.Stringify( buffer );
   return { buffer.GetString(), buffer.GetSize() };
}

std::optional<SchemaFinding> findAgainst( const Value &schema, const Value &value ) {
   const rapidjson::SchemaDocument rules( schema );
   rapidjson::SchemaValidator validator( rules );
   if ( value.Accept( validator ) )
      return {};
   const rapidjson::Pointer place = validator.GetInvalidDocumentPointer();
   const Value *rule = validator.GetInvalidSchemaPointer().Get( schema );
   const Value *found = place.Get( value );
   const std::string keyword = validator.GetInvalidSchemaKeyword();
   return SchemaFinding{ place, keyword,
                         rule && found ? explain( *rule, keyword, *found )
                                       : "against \"" + keyword + "\"" };
}

} // namespace BoardFiles
