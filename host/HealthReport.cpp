#include "host/HealthReport.h"

namespace Host {

HealthReport healthOf( const Health::Monitor &monitor, const Health::BoardReport &board ) {
   HealthReport report{ .level = monitor.level(), .causes = monitor.causes() };
   if ( !monitor.hasLooked() )
      return report; // nothing is known to be good
   for ( const Health::ObjectReport &object : board ) {
      const Health::ObjectHealth health = object.health.value_or( Health::ObjectHealth() );
      if ( health.isAbsent && health.cause.empty() ) {
         ++report.absent;
         continue;
      }
      ++report.objects;
      report.good += health.level == Health::Level::Ok;
   }
   return report;
}

} // namespace Host
