#include "http/Exchange.h"

#include "http/Utf8.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace Http {

Response errorResponse( unsigned status, std::string_view words ) {
   rapidjson::StringBuffer text;
   rapidjson::Writer<rapidjson::StringBuffer> json( text );
   json.StartObject();
   json.Key( "error" );
   const std::string valid = withoutOtherBytes( words ); // they may name what a client has sent
   json.String( valid.data(), static_cast<rapidjson::SizeType>( valid.size() ) );
   json.EndObject();
   return { .status = status, .body = { text.GetString(), text.GetSize() } };
}

} // namespace Http
