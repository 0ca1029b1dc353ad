#include "orbis-smbus/Target.h"

#include <fmt/format.h>

namespace SmbusClient {

std::optional<Target> parseTarget( std::string_view text ) {
   const size_t last = text.rfind( ':' );
   if ( last == text.npos )
      return {};
   const auto bus = Bus::parseRootBusId( text.substr( 0, last ) );
   const auto address = Bus::parseNumber( text.substr( last + 1 ), Bus::maxAddress );
   if ( !bus || !address )
      return {};
   Target target;
   target.bus = *bus;
   target.address = static_cast<uint8_t>( *address );
   return target;
}

std::optional<Size> parseSize( std::string_view text ) {
   constexpr uint32_t most = 8192; // the server's limit for one request
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

std::string toString( const Target &target ) {
   return fmt::format( "{}:{:#04x}", toString( target.bus ), target.address );
}

} // namespace SmbusClient
