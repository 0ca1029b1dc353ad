#include "support/StateSchema.h"

#include <rapidjson/pointer.h>
#include <rapidjson/schema.h>
#include <rapidjson/stringbuffer.h>

#include <fstream>
#include <iterator>

rapidjson::Document parsedFile( const std::string &path ) {
   std::ifstream stream( path );
   const std::string text{ std::istreambuf_iterator<char>( stream ), {} };
   rapidjson::Document document;
   document.Parse( text.c_str() );
   return document;
}

std::string stateSchemaFault( const std::string &json ) { return schemaFault( json, "state" ); }

std::string schemaFault( const std::string &json, const std::string &name ) {
   const rapidjson::Document schema = parsedFile( BOARDS "/" + name + ".schema.json" );
   rapidjson::Document document;
   if ( schema.HasParseError() || document.Parse( json.c_str() ).HasParseError() )
      return "doesn't parse";
   const rapidjson::SchemaDocument compiled( schema );
   rapidjson::SchemaValidator validator( compiled );
   if ( document.Accept( validator ) )
      return {};
   rapidjson::StringBuffer pointer;
   validator.GetInvalidDocumentPointer().Stringify( pointer );
   return std::string( pointer.GetString() ) + ": " + validator.GetInvalidSchemaKeyword();
}
