#include "http/Exchange.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace Http {

Response errorResponse( unsigned status, std::string_view words ) {
   rapidjson::StringBuffer text;
   rapidjson::Writer<rapidjson::StringBuffer> json( text );
   json.StartObject();
   json.Key( "error" );
   json.String( words.data(), static_cast<rapidjson::SizeType>( words.size() ) );
   json.EndObject();
   return { .status = status, .body = { text.GetString(), text.GetSize() } };
}

} // namespace Http
