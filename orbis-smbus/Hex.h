#pragma once

#include <fmt/format.h>

#include <string>

namespace SmbusClient {

// " 19 80"
inline std::string hex( const std::string &bytes ) {
   std::string text;
   for ( const char byte : bytes )
      text += fmt::format( " {:02x}", static_cast<unsigned char>( byte ) );
   return text;
}

} // namespace SmbusClient
