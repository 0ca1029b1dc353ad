#include "smbusd/lease/CarryOut.h"

#include <unistd.h>

namespace Smbusd {

std::string carryOut( Dispatcher &dispatcher, const SafeWrite &write ) {
   const Peer self{ .user = geteuid(), .process = getpid() };
   const auto position = static_cast<int>( write.path.size() ); // of the request behind the path
   bool hasToRead = write.mask.has_value();
   Dispatcher::Exchange exchange;
   exchange.request = hasToRead ? write.reading() : write.writing( write.value );
   const auto next = [&]( Dispatcher::Exchange &read ) {
      if ( !hasToRead || read.response.failed() )
         return false;
      hasToRead = false;
      const std::string &data = read.response.response( position ).data();
      read.request = write.writing( write.merged( static_cast<uint8_t>( data.at( 0 ) ) ) );
      return true;
   };
   if ( !dispatcher.carryOut( exchange, self, nullptr, next ) )
      return "the server is stopping";
   return exchange.response.failed() ? exchange.response.error() : std::string();
}

} // namespace Smbusd
