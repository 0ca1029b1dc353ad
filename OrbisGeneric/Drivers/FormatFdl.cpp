#include "OrbisGeneric/Drivers/FormatFdl.h"

#include "OrbisGeneric/Host.h"

#include <cassert>

namespace Drivers {

void FormatFdl::start() {
   text_ = template_;
   active_ = true;
}

bool FormatFdl::set( std::string key, std::string value ) {
   PL_TRACE( 5, "FormatFdl::set( '%s', '%s' )", key.c_str(), value.c_str() );
   assert( active_ && "FormatFdl: Must call start() before set(...)" );
   const std::string placeholder = "{" + key + "}";
   const size_t found = text_.find( placeholder );
   if ( found == std::string::npos )
      PL_TRACE( 0, "Error: FormatFdl::set -- invalid key '%s'", placeholder.c_str() );
   assert( found != std::string::npos );
   text_.replace( found, placeholder.size(), value );
   return true;
}

const char *FormatFdl::charPtr() {
   assert( active_ && "FormatFdl: Must call start() before charPtr()" );
   active_ = false;
   return text_.c_str();
}

} // namespace Drivers
