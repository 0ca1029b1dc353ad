#include "http/Utf8.h"

#include <rapidjson/encodings.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/stringbuffer.h>

namespace Http {

std::string withoutOtherBytes( std::string_view text ) {
   std::string result;
   while ( !text.empty() ) {
      rapidjson::MemoryStream input( text.data(), text.size() );
      rapidjson::StringBuffer character;
      const bool isValid = rapidjson::UTF8<>::Validate( input, character ) &&
                           input.Tell() <= text.size(); // it ends in zeros, which may be asked for
      result += isValid ? text.substr( 0, input.Tell() ) : "\xEF\xBF\xBD";
      text.remove_prefix( isValid ? input.Tell() : 1 );
   }
   return result;
}

} // namespace Http
