#include "board/SimulationSchema.h"

#include <fmt/format.h>
#include <rapidjson/pointer.h>
#include <rapidjson/schema.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <optional>

namespace Smbusd {

namespace {

using rapidjson::Value;

std::string asText( const Value &value ) {
   rapidjson::StringBuffer buffer;
   rapidjson::Writer<rapidjson::StringBuffer> writer( buffer );
   value.Accept( writer );
   return { buffer.GetString(), buffer.GetSize() };
}

std::string asText( const rapidjson::Pointer &pointer ) {
   rapidjson::StringBuffer buffer;
   pointer.Stringify( buffer );
   return { buffer.GetString(), buffer.GetSize() };
}

std::string missingKey( const Value &rule, const Value &object ) {
   for ( const Value &key : rule["required"].GetArray() ) {
      if ( !object.HasMember( key ) )
         return key.GetString();
   }
   return {};
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
   if ( keyword == "enum" )
      return fmt::format( "{} is none of {}", asText( value ), asText( rule["enum"] ) );
   return fmt::format( "{} is against \"{}\"", asText( value ), keyword );
}

struct Finding {
   rapidjson::Pointer place; // below the value that was checked
   std::string keyword;
   std::string reason;
};

std::optional<Finding> check( const Value &schema, const Value &value ) {
   const rapidjson::SchemaDocument rules( schema );
   rapidjson::SchemaValidator validator( rules );
   if ( value.Accept( validator ) )
      return {};
   const rapidjson::Pointer place = validator.GetInvalidDocumentPointer();
   const Value *rule = validator.GetInvalidSchemaPointer().Get( schema );
   const Value *found = place.Get( value );
   const std::string keyword = validator.GetInvalidSchemaKeyword();
   return Finding{ place, keyword,
                   rule && found ? explain( *rule, keyword, *found )
                                 : "against \"" + keyword + "\"" };
}

} // namespace

void checkSimulation( const JsonFile &file ) {
   rapidjson::Document schema;
   schema.Parse( simulationSchema.data(), simulationSchema.size() );
   std::optional<Finding> finding = check( schema, file.document );
   if ( !finding )
      return;
   const std::string place = asText( finding->place );
   if ( finding->keyword != "anyOf" )
      throw BoardError::at( file.path, place, finding->reason );
   // None of the kinds: told by the rules of the one that it says it is.
   const Value &entry = *finding->place.Get( file.document );
   finding = check( schema["definitions"][entry["chip"]], entry );
   throw BoardError::at( file.path, place + asText( finding->place ), finding->reason );
}

} // namespace Smbusd
