#include "optics/sff8472/Calibration.h"

#include "optics/Decode.h"
#include "optics/sff8472/Sff8472.h"

#include <cmath>
#include <fmt/format.h>

namespace Optics::Sff8472 {

namespace {

// The result is a word of the same unit again, so that it has the same range.
std::optional<double> inRange( double counts, bool isSigned, double perUnit ) {
   const double highest = isSigned ? 0x7FFF : 0xFFFF;
   // A little below zero is rounding, or darkness; more of it is no measurement.
   const double lowest = isSigned ? -0x8000 : -0x1000;
   if ( counts < lowest || counts > highest )
      return {};
   return ( isSigned ? counts : std::max( counts, 0.0 ) ) / perUnit;
}

// SFF-8472, A2h bytes 76 to 91: a slope in 1/256, and an offset in counts of the result.
struct Line {
   Quantity quantity;
   unsigned slope, offset; // bytes
   bool isSigned;
   double perUnit;
};
constexpr Line biasLine{ Quantity::TxBias, 76, 78, false, 500 };
constexpr Line txPowerLine{ Quantity::TxPower, 80, 82, false, 10000 };
constexpr Line temperatureLine{ Quantity::Temperature, 84, 86, true, 256 };
constexpr Line voltageLine{ Quantity::SupplyVoltage, 88, 90, false, 10000 };

Conversion conversionOf( const Line &line, const Half &diagnostics, Module &module ) {
   const auto slope = diagnostics.word( line.slope );
   const auto offset = diagnostics.word( line.offset );
   if ( !slope || !offset )
      return {};
   if ( *slope == 0 ) {
      module.findings.push_back(
         fmt::format( "the {} can't be calibrated: its slope, A2h bytes {} and {}, is 0",
                      nameOf( line.quantity ), line.slope, line.slope + 1 ) );
      return {};
   }
   return
      [line, factor = *slope / 256.0, added = static_cast<int16_t>( *offset )]( uint16_t word ) {
         const double raw = line.isSigned ? static_cast<int16_t>( word ) : double( word );
         return inRange( factor * raw + added, line.isSigned, line.perUnit );
      };
}

// A2h bytes 56 to 75: a polynomial, the constant of the fourth power first.
Conversion rxPowerConversion( const Half &diagnostics, Module &module ) {
   std::array<double, 5> constants{};
   bool isFinite = true;
   bool isZero = true;
   for ( unsigned i = 0; i < constants.size(); ++i ) {
      const auto constant = diagnostics.real( 56 + 4 * i );
      if ( !constant )
         return {};
      constants[i] = *constant;
      isFinite = isFinite && std::isfinite( *constant );
      isZero = isZero && *constant == 0;
   }
   if ( !isFinite || isZero ) {
      module.findings.push_back(
         fmt::format( "the rx power can't be calibrated: {} constants, A2h bytes 56 to 75, {}",
                      isFinite ? "all its" : "of its", isFinite ? "are 0" : "one is no number" ) );
      return {};
   }
   return [constants]( uint16_t word ) {
      double counts = 0;
      for ( const double constant : constants )
         counts = counts * word + constant;
      return inRange( counts, false, 10000 );
   };
}

} // namespace

Calibration calibrationOf( const Image &image, Module &module ) {
   if ( !module.isExternallyCalibrated )
      return { celsius(), volts(), milliamperes(), milliwatts(), milliwatts() };
   const Half diagnostics( image, a2 );
   return { conversionOf( temperatureLine, diagnostics, module ),
            conversionOf( voltageLine, diagnostics, module ),
            conversionOf( biasLine, diagnostics, module ),
            conversionOf( txPowerLine, diagnostics, module ),
            rxPowerConversion( diagnostics, module ) };
}

} // namespace Optics::Sff8472
