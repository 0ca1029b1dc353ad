#include "support/StateSchema.h"

#include "boardfiles/Json.h"

#include <rapidjson/schema.h>

std::string stateSchemaFault( const std::string &json ) {
   BoardFiles::Findings findings;
   const auto schema = BoardFiles::Json::load( BOARDS "/state.schema.json", findings );
   rapidjson::Document document;
   if ( !schema || document.Parse( json.c_str() ).HasParseError() )
      return "doesn't parse";
   const rapidjson::SchemaDocument compiled( schema->document );
   rapidjson::SchemaValidator validator( compiled );
   if ( document.Accept( validator ) )
      return {};
   const BoardFiles::Place place{ "state", validator.GetInvalidDocumentPointer() };
   return place.pointerText() + ": " + validator.GetInvalidSchemaKeyword();
}
