#include "host/session/CageModule.h"

#include "host/session/ModuleReadings.h"
#include "optics/Decode.h"

#include <algorithm>
#include <fmt/format.h>

namespace Host {
namespace {

// The flags, and those that the values themselves would set.
std::vector<std::string> allFlagsOf( Optics::Module module ) {
   for ( Optics::Monitor &monitor : module.monitors ) {
      if ( !monitor.value )
         continue;
      const auto look = [&]( std::optional<bool> &flag, const std::optional<double> &limit,
                             bool isHigh ) {
         if ( limit && ( isHigh ? *monitor.value > *limit : *monitor.value < *limit ) )
            flag = true;
      };
      const BoardFiles::ValueLimits limits = limitsOf( monitor );
      look( monitor.flags.highAlarm, limits.highCritical, true );
      look( monitor.flags.lowAlarm, limits.lowCritical, false );
      look( monitor.flags.highWarning, limits.highWarning, true );
      look( monitor.flags.lowWarning, limits.lowWarning, false );
   }
   return flagsOf( module );
}

int badness( const std::string &flag ) {
   if ( flag.starts_with( "tx_fault" ) || flag.ends_with( "alarm" ) )
      return 2;
   return flag.ends_with( "warning" ) ? 0 : 1;
}

} // namespace

void decode( CageModule &module, std::optional<Optics::Standard> standard ) {
   if ( !standard )
      standard = Optics::standardOf( module.image );
   if ( standard )
      module.module = Optics::decode( module.image, *standard );
}

std::string worstOf( const Optics::Module &module ) {
   const auto flags = allFlagsOf( module );
   const auto worst = std::max_element( flags.begin(), flags.end(),
                                        []( const std::string &one, const std::string &other ) {
                                           return badness( one ) < badness( other );
                                        } );
   return worst == flags.end() ? "" : *worst;
}

} // namespace Host
