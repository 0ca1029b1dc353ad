#include "host/HealthReport.h"

#include <algorithm>

namespace Host {

HealthReport healthOf( const Health::Monitor &monitor, const Health::BoardReport &board ) {
   const auto isGood = []( const Health::ObjectReport &object ) {
      return object.health && object.health->level == Health::Level::Ok;
   };
   return { .level = monitor.level(),
            .causes = monitor.causes(),
            .objects = board.size(),
            .good = static_cast<size_t>( std::count_if( board.begin(), board.end(), isGood ) ) };
}

} // namespace Host
