#include "host/session/ModuleReadings.h"

#include "optics/Decode.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <limits>
#include <utility>

namespace Host {
namespace {

// "tx bias" is "tx_bias".
std::string underscored( std::string name ) {
   std::replace( name.begin(), name.end(), ' ', '_' );
   return name;
}

// The finest unit of the standards is 0.1 uW, 0.0001 mW.
double rounded( double number ) { return std::round( number * 10000 ) / 10000; }

Reading readingOf( const Optics::Monitor &monitor, const Optics::Module &module ) {
   Reading reading{ .name = valueNameOf( monitor, module ), .unit = monitor.unit };
   if ( monitor.value ) {
      reading.value = rounded( *monitor.value );
      return reading;
   }
   reading.state = State::Unreadable;
   reading.fault.words = module.isReady == false ? "the module is not ready yet"
                                                 : "the module's memory doesn't hold it";
   return reading;
}

void addFlags( std::vector<std::string> &flags, const std::string &value,
               const Optics::ThresholdFlags &set ) {
   for ( const auto &[flag, words] :
         { std::pair( set.highAlarm, "high alarm" ), std::pair( set.lowAlarm, "low alarm" ),
           std::pair( set.highWarning, "high warning" ),
           std::pair( set.lowWarning, "low warning" ) } )
      if ( flag == true )
         flags.push_back( fmt::format( "{} {}", value, words ) );
}

void addFlags( std::vector<std::string> &flags, const Optics::Lane &lane ) {
   for ( const auto &[flag, name] :
         { std::pair( lane.txFault, "tx_fault" ), std::pair( lane.rxLos, "rx_los" ),
           std::pair( lane.txLos, "tx_los" ), std::pair( lane.rxLossOfLock, "rx_loss_of_lock" ),
           std::pair( lane.txLossOfLock, "tx_loss_of_lock" ),
           std::pair( lane.txEqualizerFault, "tx_equalizer_fault" ) } )
      if ( flag == true )
         flags.push_back( fmt::format( "{} {}", name, lane.number ) );
}

bool isInOrder( const BoardFiles::ValueLimits &limits ) {
   std::optional<double> before;
   for ( const auto &limit :
         { limits.lowCritical, limits.lowWarning, limits.highWarning, limits.highCritical } ) {
      if ( limit && before && *limit < *before )
         return false;
      before = limit ? limit : before;
   }
   return !( limits.lowCritical && limits.lowCritical == limits.highCritical );
}

// The transmitter is off because somebody wants that, or has no signal to send yet.
bool isOff( const Optics::Lane &lane, const Optics::Module &module ) {
   constexpr uint8_t activated = 4; // CMIS, DataPathActivated
   return module.isLowPower == true || lane.txDisabled == true ||
          ( lane.dataPathState && lane.dataPathState->number != activated );
}

// What it sends is not beyond its thresholds then.
bool isOff( const Optics::Monitor &monitor, const Optics::Module &module ) {
   const bool isSent =
      monitor.quantity == Optics::Quantity::TxPower || monitor.quantity == Optics::Quantity::TxBias;
   return isSent &&
          std::any_of( module.lanes.begin(), module.lanes.end(), [&]( const Optics::Lane &lane ) {
             return lane.number == monitor.lane && isOff( lane, module );
          } );
}

} // namespace

std::string valueNameOf( const Optics::Monitor &monitor, const Optics::Module &module ) {
   const std::string name = underscored( nameOf( monitor.quantity ) );
   return monitor.lane == 0 || module.lanes.size() < 2 ? name
                                                       : fmt::format( "{}_{}", name, monitor.lane );
}

std::vector<std::string> flagsOf( const Optics::Module &module ) {
   std::vector<std::string> flags;
   for ( const Optics::Monitor &monitor : module.monitors )
      addFlags( flags, valueNameOf( monitor, module ), monitor.flags );
   for ( const Optics::Lane &lane : module.lanes )
      addFlags( flags, lane );
   flags.insert( flags.end(), module.flags.begin(), module.flags.end() );
   return flags;
}

std::vector<Reading> readingsOf( const Optics::Module &module,
                                 const std::set<std::string> &flags ) {
   std::vector<Reading> readings{ { .name = "vendor", .value = module.vendor },
                                  { .name = "part_number", .value = module.partNumber },
                                  { .name = "serial", .value = module.serial } };
   if ( module.state )
      readings.push_back( { .name = "state", .value = module.state->name } );
   for ( const Optics::Monitor &monitor : module.monitors )
      readings.push_back( readingOf( monitor, module ) );
   readings.push_back( flagsReadingOf( module, flags ) );
   return readings;
}

Reading flagsReadingOf( const Optics::Module &module, const std::set<std::string> &before ) {
   Optics::Module wanted = module;
   std::erase_if( wanted.monitors,
                  [&]( const Optics::Monitor &monitor ) { return isOff( monitor, module ); } );
   std::vector<std::string> flags = flagsOf( wanted );
   for ( const std::string &flag : before )
      if ( std::find( flags.begin(), flags.end(), flag ) == flags.end() )
         flags.push_back( flag );
   return { .name = "flags",
            .value = flags.empty() ? std::string( "ok" )
                                   : fmt::format( "{}", fmt::join( flags, ", " ) ) };
}

BoardFiles::ValueLimits limitsOf( const Optics::Monitor &monitor ) {
   const Optics::Thresholds &thresholds = monitor.thresholds;
   BoardFiles::ValueLimits limits{ .lowCritical = thresholds.lowAlarm,
                                   .lowWarning = thresholds.lowWarning,
                                   .highWarning = thresholds.highWarning,
                                   .highCritical = thresholds.highAlarm };
   if ( !isInOrder( limits ) )
      return {};
   double nearest = std::numeric_limits<double>::max();
   for ( const auto &limit :
         { limits.lowCritical, limits.lowWarning, limits.highWarning, limits.highCritical } )
      if ( limit && *limit != 0 )
         nearest = std::min( nearest, std::abs( *limit ) );
   if ( nearest < std::numeric_limits<double>::max() )
      limits.hysteresis = nearest / 50;
   return limits;
}

std::map<std::string, BoardFiles::ValueLimits> limitsOf( const Optics::Module &module ) {
   std::map<std::string, BoardFiles::ValueLimits> all;
   for ( const Optics::Monitor &monitor : module.monitors )
      all[valueNameOf( monitor, module )] = isOff( monitor, module )
                                               ? BoardFiles::ValueLimits{ .ignored = true }
                                               : limitsOf( monitor );
   return all;
}

} // namespace Host
