#include "optics/Monitors.h"

#include "optics/Checksums.h"
#include "optics/cmis/Cmis.h"

namespace Optics::Cmis {

namespace {

// CMIS, lower bytes 8 to 11: four bits from `low` up, the other way round than in SFF-8636.
FlagPlaces quartet( unsigned byte, unsigned low ) {
   return { { byte, low }, { byte, low + 1 }, { byte, low + 2 }, { byte, low + 3 } };
}

// CMIS, page 11h: a byte for each flag, a bit for each lane.
FlagPlaces laneFlags( unsigned firstByte, unsigned lane ) {
   const unsigned bit = lane - 1;
   return {
      { firstByte, bit }, { firstByte + 1, bit }, { firstByte + 2, bit }, { firstByte + 3, bit }
   };
}

struct Place {
   unsigned value, thresholds; // page 02h byte
   FlagPlaces flags;
   Conversion conversion;
};

void addMonitor( const Image &image, const Half &half, Monitor monitor, const Place &place,
                 Module &module ) {
   monitor.value = valueAt( half, place.value, place.conversion );
   monitor.thresholds = thresholdsAt( Half( image, page02 ), place.thresholds, place.conversion );
   monitor.flags = flagsAt( half, place.flags );
   module.monitors.push_back( monitor );
}

// What an auxiliary monitor measures, by its bit in page 01h byte 145.
struct Auxiliary {
   std::optional<Quantity> quantity; // nothing: the maker's own
   Conversion conversion;
};

Auxiliary auxiliary( unsigned number, bool bit ) {
   using enum Quantity;
   if ( number == 3 && bit )
      return { SecondVoltage, volts() };
   if ( number != 3 && bit )
      return { TecCurrent, signedCounts( 32767 / 100.0 ) }; // 100 % is 32767
   if ( number == 1 )
      return {};
   return { LaserTemperature, celsius() };
}

void addModuleMonitors( const Image &image, Module &module ) {
   const Half base( image, lower );
   const Half advertised( image, page01 );
   using enum Quantity;
   // CMIS, lower bytes 14 to 23, flags in 9 to 11; page 01h byte 159 tells which are there.
   if ( advertised.bit( 159, 0 ) == true )
      addMonitor( image, base, monitorOf( Temperature ), { 14, 128, quartet( 9, 0 ), celsius() },
                  module );
   if ( advertised.bit( 159, 1 ) == true )
      addMonitor( image, base, monitorOf( SupplyVoltage ), { 16, 136, quartet( 9, 4 ), volts() },
                  module );
   for ( unsigned number = 1; number <= 3; ++number ) {
      const auto kind = advertised.bit( 145, number - 1 );
      if ( advertised.bit( 159, 1 + number ) != true || !kind )
         continue;
      const Auxiliary found = auxiliary( number, *kind );
      if ( !found.quantity )
         continue;
      Monitor monitor = monitorOf( *found.quantity );
      if ( found.quantity == TecCurrent )
         monitor.unit = "%";
      addMonitor( image, base, monitor,
                  { 16 + 2 * number, 136 + 8 * number,
                    quartet( 10 + ( number - 1 ) / 2, number == 2 ? 4 : 0 ), found.conversion },
                  module );
   }
}

// Page 01h byte 160, bits 4 and 3: what a count of bias is worth.
std::optional<unsigned> biasScale( const Half &advertised, Module &module ) {
   const auto code = advertised.bits( 160, 4, 3 );
   if ( code != 3 )
      return code ? std::optional( 1u << *code ) : std::nullopt;
   if ( advertised.bit( 160, 0 ) == true )
      module.findings.emplace_back(
         "the scale of the tx bias is a reserved one (page 01h, byte 160): "
         "the bias is not shown" );
   return {};
}

void addLaneMonitors( const Image &image, Module &module ) {
   const Half advertised( image, page01 );
   const Half status( image, page11 );
   const auto lanes = mediaLanes( image );
   if ( !lanes )
      return;
   const auto add = [&]( Quantity quantity, Place first ) {
      for ( unsigned lane = 1; lane <= laneCount; ++lane )
         if ( *lanes >> ( lane - 1 ) & 1 )
            addMonitor( image, status, monitorOf( quantity, lane ),
                        { first.value + 2 * ( lane - 1 ), first.thresholds,
                          laneFlags( first.flags.highAlarm.byte, lane ), first.conversion },
                        module );
   };
   const auto scale = biasScale( advertised, module );
   using enum Quantity;
   // CMIS, page 11h bytes 154 to 201, flags in 139 to 152; page 01h byte 160 tells which are there.
   if ( advertised.bit( 160, 0 ) == true && scale )
      add( TxBias, { 170, 184, laneFlags( 143, 1 ), milliamperes( *scale ) } );
   if ( advertised.bit( 160, 1 ) == true )
      add( TxPower, { 154, 176, laneFlags( 139, 1 ), milliwatts() } );
   if ( advertised.bit( 160, 2 ) == true )
      add( RxPower, { 186, 192, laneFlags( 149, 1 ), milliwatts() } );
}

} // namespace

void decodeMonitors( const Image &image, Module &module ) {
   if ( isFlat( image ) != false )
      return;
   const Half advertised( image, page01 );
   module.hasDiagnostics =
      ( advertised.byte( 159 ).value_or( 0 ) & 0x1F ) || advertised.bits( 160, 2, 0 ).value_or( 0 );
   if ( !module.hasDiagnostics )
      return;
   module.rxPowerIsAverage = advertised.bit( 151, 4 );
   addModuleMonitors( image, module );
   addLaneMonitors( image, module );
   addChecksum( module, Half( image, page02 ), { "page 02h", 128, 254, 255, "the thresholds" } );
}

} // namespace Optics::Cmis
