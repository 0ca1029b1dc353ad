#include "boardfiles/RootBusText.h"

#include <fmt/format.h>

namespace BoardFiles {

std::optional<Bus::RootBusId> rootBusIn( const Json &json, Findings &findings ) {
   const auto bus = Bus::parseRootBusId( *json.toText() );
   if ( !bus )
      report( findings, json.place(),
              fmt::format( "{} is not a bus; write i2c:0, scd(4):1:2, celestica:1:1 or ioport:0",
                           json.source() ) );
   return bus;
}

} // namespace BoardFiles
