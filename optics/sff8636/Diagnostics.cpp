#include "optics/Monitors.h"
#include "optics/sff8636/Sff8636.h"

#include <fmt/format.h>

namespace Optics::Sff8636 {

namespace {

constexpr unsigned laneCount = 4;

// Four bits from `high` down.
FlagPlaces quartet( unsigned byte, unsigned high ) {
   return { { byte, high }, { byte, high - 1 }, { byte, high - 2 }, { byte, high - 3 } };
}

// Two lanes a byte, the odd lane in the upper half.
FlagPlaces laneQuartet( unsigned firstByte, unsigned lane ) {
   return quartet( firstByte + ( lane - 1 ) / 2, lane % 2 ? 7 : 3 );
}

struct Place {
   unsigned value, thresholds; // lower byte; page 03h byte
   FlagPlaces flags;
   Conversion conversion;
};

void addMonitor( const Image &image, Monitor monitor, const Place &place, Module &module ) {
   const Half base( image, lower );
   // A module that isn't ready has told nothing yet: neither values nor flags.
   if ( module.isReady == true ) {
      monitor.value = valueAt( base, place.value, place.conversion );
      monitor.flags = flagsAt( base, place.flags );
   }
   if ( base.bit( 2, 2 ) == false )
      monitor.thresholds =
         thresholdsAt( Half( image, page03 ), place.thresholds, place.conversion );
   module.monitors.push_back( monitor );
}

// Of one quantity the places of lane 1; the other lanes' follow.
struct LanePlace {
   Quantity quantity;
   unsigned value, thresholds, flags;
   Conversion conversion;
};

void addMonitors( const Image &image, const std::vector<unsigned> &lanes, Module &module ) {
   const auto found = monitored( image );
   if ( !found )
      return;
   using enum Quantity;
   // SFF-8636, lower bytes 22, 26, 6 and 7; page 03h bytes 128 and 144.
   if ( found->temperature )
      addMonitor( image, monitorOf( Temperature ), { 22, 128, quartet( 6, 7 ), celsius() },
                  module );
   if ( found->voltage )
      addMonitor( image, monitorOf( SupplyVoltage ), { 26, 144, quartet( 7, 7 ), volts() },
                  module );
   if ( !found->lanes )
      return;
   // SFF-8636, lower bytes 34 to 57 and 9 to 14; page 03h bytes 176 to 199.
   const LanePlace places[] = { { TxBias, 42, 184, 11, milliamperes() },
                                { TxPower, 50, 192, 13, milliwatts() },
                                { RxPower, 34, 176, 9, milliwatts() } };
   for ( const LanePlace &place : places ) {
      if ( place.quantity == TxPower && !found->txPower )
         continue;
      for ( const unsigned lane : lanes )
         addMonitor( image, monitorOf( place.quantity, lane ),
                     { place.value + 2 * ( lane - 1 ), place.thresholds,
                       laneQuartet( place.flags, lane ), place.conversion },
                     module );
   }
}

// Lower byte 113: bit n says that lane n + 1 isn't there.
std::vector<unsigned> lanesOf( const Half &base, Module &module ) {
   const auto missing = base.bits( 113, 3, 0 );
   if ( !missing )
      return {};
   if ( *missing == 0x0F )
      module.findings.emplace_back( "byte 113 of the lower half says that no lane is there: all "
                                    "four are shown" );
   std::vector<unsigned> lanes;
   for ( unsigned lane = 1; lane <= laneCount; ++lane )
      if ( *missing == 0x0F || !( *missing >> ( lane - 1 ) & 1 ) )
         lanes.push_back( lane );
   return lanes;
}

// Lower bytes 3 to 5: tx in the upper half, rx in the lower, lane 1 at the lowest bit of each.
Lane laneOf( const Image &image, unsigned number, const Module &module ) {
   const Half base( image, lower );
   const Half identity( image, page00 );
   const unsigned rx = number - 1;
   const unsigned tx = rx + 4;
   Lane lane;
   lane.number = number;
   if ( identity.bit( 195, 4 ) == true )
      lane.txDisabled = base.bit( 86, rx );
   if ( module.isReady != true )
      return lane;
   lane.rxLos = base.bit( 3, rx );
   if ( identity.bit( 195, 1 ) == true )
      lane.txLos = base.bit( 3, tx );
   if ( identity.bit( 193, 3 ) == true )
      lane.txEqualizerFault = base.bit( 4, tx );
   if ( identity.bit( 195, 3 ) == true )
      lane.txFault = base.bit( 4, rx );
   if ( identity.bit( 194, 5 ) == true )
      lane.txLossOfLock = base.bit( 5, tx );
   if ( identity.bit( 194, 4 ) == true )
      lane.rxLossOfLock = base.bit( 5, rx );
   return lane;
}

// Lower byte 6, if page 00h byte 221 says that they are there.
void addModuleFlags( const Image &image, Module &module ) {
   const Half base( image, lower );
   const Half identity( image, page00 );
   if ( identity.bit( 221, 4 ) == true && base.bit( 6, 0 ) == true )
      module.flags.emplace_back( "initialization complete" );
   if ( identity.bit( 221, 1 ) == true && base.bit( 6, 1 ) == true )
      module.flags.emplace_back( "TC ready" );
}

} // namespace

void decodeDiagnostics( const Image &image, Module &module ) {
   const Half base( image, lower );
   // Lower byte 2: bit 0 is 1 while the data aren't ready; bit 1 is the pin IntL, low for an
   // interrupt.
   if ( const auto notReady = base.bit( 2, 0 ) )
      module.isReady = !*notReady;
   if ( const auto pin = base.bit( 2, 1 ) )
      module.interrupts = !*pin;
   // Lower byte 93: bit 0 overrides the pin LPMode, bit 1 then chooses low power.
   if ( base.bit( 93, 0 ) == true )
      module.isLowPower = base.bit( 93, 1 );
   if ( const auto found = monitored( image ) ) {
      module.hasDiagnostics = found->temperature || found->voltage || found->lanes;
      if ( found->lanes ) {
         module.rxPowerIsAverage = Half( image, page00 ).bit( 220, 3 );
         const std::vector<unsigned> lanes = lanesOf( base, module );
         addMonitors( image, lanes, module );
         for ( const unsigned lane : lanes )
            module.lanes.push_back( laneOf( image, lane, module ) );
      } else {
         addMonitors( image, {}, module );
      }
   }
   if ( module.isReady == true )
      addModuleFlags( image, module );
}

} // namespace Optics::Sff8636
