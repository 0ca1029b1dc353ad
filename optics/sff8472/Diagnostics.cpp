#include "optics/Checksums.h"
#include "optics/Decode.h"
#include "optics/sff8472/Calibration.h"
#include "optics/sff8472/Sff8472.h"

#include <fmt/format.h>

namespace Optics::Sff8472 {

namespace {

// A2h: where a quantity stands. The flags of the warnings are four bytes behind those of the
// alarms.
struct Place {
   Quantity quantity;
   unsigned lane;
   unsigned value, thresholds;
   BitPlace highAlarm;
   const Conversion &conversion;
};

FlagPlaces flagPlacesOf( const BitPlace &highAlarm ) {
   const auto [byte, bit] = highAlarm;
   return { { byte, bit }, { byte, bit - 1 }, { byte + 4, bit }, { byte + 4, bit - 1 } };
}

// A word that the calibration takes out of the range that the unit has.
bool isLost( const Half &half, unsigned word, const std::optional<double> &result ) {
   return half.word( word ) && !result;
}

void addMonitor( const Image &image, const Place &place, Module &module ) {
   const Half diagnostics( image, a2 );
   Monitor monitor = monitorOf( place.quantity, place.lane );
   if ( module.isReady == true )
      monitor.value = valueAt( diagnostics, place.value, place.conversion );
   monitor.thresholds = thresholdsAt( diagnostics, place.thresholds, place.conversion );
   // A0h byte 93, bit 7: the flags are there.
   if ( Half( image, a0 ).bit( 93, 7 ) == true && module.isReady == true )
      monitor.flags = flagsAt( diagnostics, flagPlacesOf( place.highAlarm ) );
   module.monitors.push_back( monitor );

   const Thresholds &at = monitor.thresholds;
   const unsigned first = place.thresholds;
   const bool isOutOfRange =
      ( module.isReady == true && isLost( diagnostics, place.value, monitor.value ) ) ||
      ( hasThresholds( diagnostics, first ) &&
        ( isLost( diagnostics, first, at.highAlarm ) ||
          isLost( diagnostics, first + 2, at.lowAlarm ) ||
          isLost( diagnostics, first + 4, at.highWarning ) ||
          isLost( diagnostics, first + 6, at.lowWarning ) ) );
   // Constants that can't be used have their own finding.
   if ( isOutOfRange && place.conversion )
      module.findings.push_back( fmt::format(
         "the calibration takes the {} out of the range that a module can measure: its constants "
         "may be wrong",
         nameOf( place.quantity ) ) );
}

// No bit tells whether these are there. A cooled transmitter, A0h byte 64 bit 2, whose maker has
// set thresholds for them measures them.
void addLaserMonitors( const Image &image, Module &module ) {
   if ( Half( image, a0 ).bit( 64, 2 ) != true )
      return;
   const Conversion laser = celsius();
   const Conversion current = signedCounts( 10 ); // 0.1 mA
   const Half diagnostics( image, a2 );
   if ( hasThresholds( diagnostics, 40 ) )
      addMonitor( image, { Quantity::LaserTemperature, 1, 106, 40, { 113, 5 }, laser }, module );
   if ( hasThresholds( diagnostics, 48 ) )
      addMonitor( image, { Quantity::TecCurrent, 1, 108, 48, { 113, 3 }, current }, module );
}

// A2h byte 110. A0h byte 93 tells which of its bits mean something.
Lane laneOf( const Image &image ) {
   const Half serial( image, a0 );
   const Half diagnostics( image, a2 );
   Lane lane;
   if ( serial.bit( 93, 4 ) == true )
      lane.rxLos = diagnostics.bit( 110, 1 );
   if ( serial.bit( 93, 5 ) == true )
      lane.txFault = diagnostics.bit( 110, 2 );
   const auto disabled = diagnostics.bits( 110, 7, 6 ); // by the pin, by this byte
   if ( serial.bit( 93, 6 ) == true && disabled )
      lane.txDisabled = *disabled != 0;
   return lane;
}

void checkDiagnosticType( const Half &serial, Module &module ) {
   const auto calibrations = serial.bits( 92, 5, 4 );
   if ( calibrations == 0 || calibrations == 3 )
      module.findings.push_back( fmt::format(
         "byte 92 of A0h says that the module is calibrated {}: its numbers are taken "
         "as they stand",
         *calibrations ? "both internally and externally" : "neither internally nor externally" ) );
}

} // namespace

void decodeDiagnostics( const Image &image, Module &module ) {
   if ( needsAddressChange( image ) )
      module.findings.emplace_back( "the module's monitors can't be read: they are at an address "
                                    "that it has to be switched to (byte 92 of A0h, bit 2)" );
   module.hasDiagnostics = hasDiagnostics( image ) == true;
   if ( !module.hasDiagnostics )
      return;
   const Half serial( image, a0 );
   const Half diagnostics( image, a2 );
   checkDiagnosticType( serial, module );
   module.rxPowerIsAverage = serial.bit( 92, 3 );
   if ( const auto notReady = diagnostics.bit( 110, 0 ) )
      module.isReady = !*notReady;
   addChecksum( module, diagnostics,
                { "CC_DMI", 0, 94, 95, "the thresholds and the calibration" } );

   const Calibration calibration = calibrationOf( image, module );
   using enum Quantity;
   for ( const Place &place : {
            Place{ Temperature, 0, 96, 0, { 112, 7 }, calibration.temperature },
            Place{ SupplyVoltage, 0, 98, 8, { 112, 5 }, calibration.voltage },
            Place{ TxBias, 1, 100, 16, { 112, 3 }, calibration.bias },
            Place{ TxPower, 1, 102, 24, { 112, 1 }, calibration.txPower },
            Place{ RxPower, 1, 104, 32, { 113, 7 }, calibration.rxPower },
         } )
      addMonitor( image, place, module );
   addLaserMonitors( image, module );
   module.lanes.push_back( laneOf( image ) );
}

} // namespace Optics::Sff8472
