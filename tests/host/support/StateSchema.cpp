#include "support/StateSchema.h"

#include "check/Json.h"

#include <rapidjson/schema.h>

std::string stateSchemaFault( const std::string &json ) {
   Host::Findings findings;
   const auto schema = Host::Json::load( BOARDS "/state.schema.json", findings );
   rapidjson::Document document;
   if ( !schema || document.Parse( json.c_str() ).HasParseError() )
      return "doesn't parse";
   const rapidjson::SchemaDocument compiled( schema->document );
   rapidjson::SchemaValidator validator( compiled );
   if ( document.Accept( validator ) )
      return {};
   const Host::Place place{ "state", validator.GetInvalidDocumentPointer() };
   return place.pointerText() + ": " + validator.GetInvalidSchemaKeyword();
}
