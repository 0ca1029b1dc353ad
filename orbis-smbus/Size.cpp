#include "orbis-smbus/Size.h"

#include "smbus/RootBusId.h"

namespace SmbusClient {

std::optional<Size> parseSize( std::string_view text ) {
   constexpr uint32_t most = 8192; // the server takes no more in one request
   if ( text == "byte" )
      return Size{ Size::Form::Bytes, 1 };
   if ( text == "word" )
      return Size{ Size::Form::Word, 2 };
   if ( text == "block" )
      return Size{ Size::Form::Block, 0 };
   const auto count = Bus::parseNumber( text, most );
   if ( !count || *count == 0 )
      return {};
   return Size{ Size::Form::Bytes, *count };
}

} // namespace SmbusClient
