#include "optics/Monitors.h"

namespace Optics {

namespace {

const char *unitOf( Quantity quantity ) {
   switch ( quantity ) {
   case Quantity::Temperature:
   case Quantity::LaserTemperature:
      return "°C";
   case Quantity::SupplyVoltage:
   case Quantity::SecondVoltage:
      return "V";
   case Quantity::TxBias:
   case Quantity::TecCurrent:
      return "mA";
   case Quantity::TxPower:
   case Quantity::RxPower:
      return "mW";
   }
   return "";
}

} // namespace

Conversion unsignedCounts( double perUnit ) {
   return [perUnit]( uint16_t word ) { return word / perUnit; };
}

Conversion signedCounts( double perUnit ) {
   return [perUnit]( uint16_t word ) { return static_cast<int16_t>( word ) / perUnit; };
}

Conversion celsius() { return signedCounts( 256 ); }
Conversion volts() { return unsignedCounts( 10000 ); }
Conversion milliwatts() { return unsignedCounts( 10000 ); }

Conversion milliamperes( unsigned scale ) {
   return [scale]( uint16_t word ) { return word * scale / 500.0; };
}

std::optional<double> valueAt( const Half &half, unsigned place, const Conversion &conversion ) {
   const auto word = half.word( place );
   return word && conversion ? conversion( *word ) : std::nullopt;
}

bool hasThresholds( const Half &half, unsigned first ) {
   const auto areAll = [&]( uint16_t value ) {
      for ( unsigned place = first; place < first + 8; place += 2 )
         if ( half.word( place ).value_or( value ) != value )
            return false;
      return true;
   };
   return !areAll( 0 ) && !areAll( 0xFFFF );
}

Thresholds thresholdsAt( const Half &half, unsigned first, const Conversion &conversion ) {
   if ( !hasThresholds( half, first ) )
      return {};
   return { valueAt( half, first, conversion ), valueAt( half, first + 2, conversion ),
            valueAt( half, first + 4, conversion ), valueAt( half, first + 6, conversion ) };
}

ThresholdFlags flagsAt( const Half &half, const FlagPlaces &places ) {
   const auto flag = [&]( const BitPlace &place ) { return half.bit( place.byte, place.bit ); };
   return { flag( places.highAlarm ), flag( places.lowAlarm ), flag( places.highWarning ),
            flag( places.lowWarning ) };
}

Monitor monitorOf( Quantity quantity, unsigned lane ) {
   Monitor monitor;
   monitor.quantity = quantity;
   monitor.lane = lane;
   monitor.unit = unitOf( quantity );
   return monitor;
}

} // namespace Optics
