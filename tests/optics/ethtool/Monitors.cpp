// Monitors, their thresholds and their flags, which have labels of the same form for all standards.
#include "Comparison.h"
#include "ExternalCalibration.h"
#include "MonitorLabels.h"

#include <cmath>
#include <cstring>
#include <fmt/format.h>
#include <gtest/gtest.h>

namespace OpticsTest {

using namespace Optics;

namespace {

using Label = MonitorLabel;

template <class Four>
auto member( const Four &four, const std::string &which ) {
   return which == "high alarm"     ? four.highAlarm
          : which == "low alarm"    ? four.lowAlarm
          : which == "high warning" ? four.highWarning
                                    : four.lowWarning;
}

// A count of the memory, in the monitor's unit.
double countOf( Quantity quantity ) {
   return quantity == Quantity::Temperature ? 1 / 256.0
          : quantity == Quantity::TxBias    ? 0.002
                                            : 1e-4;
}

double digitOf( Quantity quantity ) {
   return quantity == Quantity::Temperature ? 0.01 : quantity == Quantity::TxBias ? 0.001 : 1e-4;
}

// "0.5000 mW / -3.01 dBm", "25.50 degrees C / 77.90 degrees F", "7.000 mA", "3.3000 V".
bool isSameNumber( const Comparison &comparison, Quantity quantity, double ours,
                   const std::string &text ) {
   char *rest = nullptr;
   const double theirs = std::strtod( text.c_str(), &rest );
   // With external calibration ethtool goes on with a whole number of counts.
   const double allowed = digitOf( quantity ) / 2 + 1e-9 +
                          ( comparison.module.isExternallyCalibrated ? countOf( quantity ) : 0 );
   if ( std::abs( theirs - ours ) > allowed )
      return false;
   const std::string unit = rest;
   switch ( quantity ) {
   case Quantity::Temperature: {
      const double fahrenheit =
         std::strtod( unit.c_str() + std::strlen( " degrees C / " ), nullptr );
      return unit.starts_with( " degrees C / " ) &&
             std::abs( fahrenheit - ( ours * 1.8 + 32 ) ) < 0.0051 + allowed * 1.8;
   }
   case Quantity::SupplyVoltage:
      return unit == " V";
   case Quantity::TxBias:
      return unit == " mA";
   default: {
      if ( !unit.starts_with( " mW / " ) || !unit.ends_with( " dBm" ) )
         return false;
      const double theirDbm = std::strtod( unit.c_str() + std::strlen( " mW / " ), nullptr );
      if ( !comparison.module.isExternallyCalibrated && !dBm( ours ) )
         return std::isinf( theirDbm );
      if ( !dBm( ours ) || std::isinf( theirDbm ) )
         return ours <= allowed && theirs <= allowed;
      const double spread = comparison.module.isExternallyCalibrated
                               ? 4.35 * allowed / std::max( ours - allowed, 1e-9 )
                               : 0;
      return std::abs( theirDbm - *dBm( ours ) ) < 0.0051 + spread;
   }
   }
}

// Where the word stands at A2h.
size_t wordAt( const Label &label ) {
   static const std::map<Quantity, std::pair<size_t, size_t>> places{
      { Quantity::Temperature, { 96, 0 } }, { Quantity::SupplyVoltage, { 98, 8 } },
      { Quantity::TxBias, { 100, 16 } },    { Quantity::TxPower, { 102, 24 } },
      { Quantity::RxPower, { 104, 32 } },
   };
   const auto &[value, thresholds] = places.at( label.quantity );
   if ( !label.isThreshold )
      return value;
   return thresholds + ( label.which == "high alarm"     ? 0
                         : label.which == "low alarm"    ? 2
                         : label.which == "high warning" ? 4
                                                         : 6 );
}

// The constants make no number of the word, and we say so.
bool isUncalibrated( const Comparison &comparison, const Label &label ) {
   const Module &module = comparison.module;
   if ( !module.isExternallyCalibrated ||
        canBe( comparison.file, label.quantity, wordAt( label ) ) )
      return false;
   for ( const std::string &finding : module.findings )
      if ( finding.find( fmt::format( "the {}", nameOf( label.quantity ) ) ) != std::string::npos &&
           finding.find( "calibra" ) != std::string::npos )
         return true;
   return false;
}

// ethtool multiplies all constants of the polynomial by the word itself, not by its powers.
bool isWithoutPowers( const Comparison &comparison, const Label &label, const std::string &text ) {
   if ( !comparison.module.isExternallyCalibrated || label.quantity != Quantity::RxPower )
      return false;
   const double counts = withoutPowers( comparison.file, wordAt( label ) );
   return isSameNumber( comparison, label.quantity, std::max( counts, 0.0 ) / 10000, text );
}

// Below zero, which is 0 for us.
bool wrapsAround( const Comparison &comparison, const Label &label, double ours,
                  const std::string &text ) {
   const double theirs = std::strtod( text.c_str(), nullptr );
   return comparison.module.isExternallyCalibrated && ours == 0 &&
          theirs > 0.9 * 65536 * countOf( label.quantity );
}

// CMIS multiplies the bias by its scale; ethtool shifts its count the other way.
bool isDivided( const Comparison &comparison, const Label &label, double ours,
                const std::string &text ) {
   const Bytes &file = comparison.file;
   if ( comparison.module.standard != Standard::Cmis || label.quantity != Quantity::TxBias )
      return false;
   const unsigned shift = file[page01OfCmis + 160] >> 3 & 3;
   const auto counts = static_cast<unsigned>( std::lround( ours * 500 ) ) >> shift;
   return shift && isSameNumber( comparison, label.quantity, ( counts >> shift ) / 500.0, text );
}

void compareNumber( Comparison &comparison, const Line &line, const Label &label,
                    const std::optional<double> &ours ) {
   if ( ours && isSameNumber( comparison, label.quantity, *ours, line.value ) )
      comparison.same( line );
   else if ( ours && isWithoutPowers( comparison, label, line.value ) )
      comparison.differs( line, "ethtool does not raise the word to the powers of the polynomial" );
   else if ( ours && isDivided( comparison, label, *ours, line.value ) )
      comparison.differs( line, "ethtool divides the bias by its scale" );
   else if ( ours && wrapsAround( comparison, label, *ours, line.value ) )
      comparison.differs( line,
                          "ethtool lets a calibrated value below zero start again at the top" );
   else if ( comparison.module.standard == Standard::Sff8472 &&
             ( comparison.file[92] & 0x30 ) == 0x30 )
      comparison.differs( line, "of two kinds of calibration, ethtool takes the external one" );
   else
      comparison.wrong( line, ours ? fmt::format( "{}", *ours ) : "nothing" );
}

void compareValue( Comparison &comparison, const Line &line, const Label &label,
                   const Monitor &monitor ) {
   if ( label.isAverage && label.isAverage != comparison.module.rxPowerIsAverage )
      return comparison.wrong( line, "the other kind of rx power" );
   comparison.seen.insert( fmt::format( "{} {}", nameOf( label.quantity ), label.lane ) );
   if ( monitor.value )
      return compareNumber( comparison, line, label, monitor.value );
   if ( comparison.module.isReady == false )
      return comparison.differs( line, "ethtool shows values that the module says are not ready" );
   if ( isUncalibrated( comparison, label ) )
      return comparison.differs( line, "ethtool shows values of a calibration that can't be" );
   comparison.wrong( line, "nothing" );
}

void compareThreshold( Comparison &comparison, const Line &line, const Label &label,
                       const Monitor &monitor ) {
   const auto ours = member( monitor.thresholds, label.which );
   if ( ours )
      return compareNumber( comparison, line, label, ours );
   const double theirs = std::strtod( line.value.c_str(), nullptr );
   const double top =
      label.quantity == Quantity::Temperature ? -0.01 : 0xFFFE * countOf( label.quantity );
   if ( monitor.thresholds == Thresholds{} &&
        ( theirs == 0 || std::abs( theirs - top ) < 2 * countOf( label.quantity ) ||
          line.value.starts_with( "-0.00 " ) ) )
      return comparison.differs( line, "ethtool shows thresholds that are all 0000h or all FFFFh" );
   if ( isUncalibrated( comparison, label ) )
      return comparison.differs( line, "ethtool shows thresholds of a calibration that can't be" );
   comparison.wrong( line, "nothing" );
}

// In CMIS ethtool takes the number of the lane less one for the mask of its bit.
bool isOfMistakenBit( const Comparison &comparison, const Label &label, const std::string &text ) {
   if ( comparison.module.standard != Standard::Cmis || !label.lane )
      return false;
   const size_t first = label.quantity == Quantity::TxPower  ? 139
                        : label.quantity == Quantity::TxBias ? 143
                                                             : 149;
   const size_t which = label.which == "high alarm"     ? 0
                        : label.which == "low alarm"    ? 1
                        : label.which == "high warning" ? 2
                                                        : 3;
   const uint8_t byte = comparison.file[page11OfCmis + first + which];
   return text == ( byte & ( label.lane - 1 ) ? "On" : "Off" );
}

void compareFlag( Comparison &comparison, const Line &line, const Label &label,
                  const Monitor &monitor ) {
   const auto ours = member( monitor.flags, label.which );
   if ( ours && line.value != ( *ours ? "On" : "Off" ) &&
        isOfMistakenBit( comparison, label, line.value ) )
      return comparison.differs( line, "ethtool takes a lane's number for the mask of its flag" );
   if ( ours )
      return comparison.expect( line, *ours ? "On" : "Off" );
   if ( comparison.module.isReady == false )
      return comparison.differs( line, "ethtool shows flags of data that are not ready" );
   comparison.wrong( line, "nothing" );
}

// CMIS, page 01h bytes 159 and 160, page 00h byte 210.
std::string reasonOfNoneInCmis( const Bytes &file, const Label &label ) {
   static const std::map<Quantity, std::pair<size_t, unsigned>> bits{
      { Quantity::Temperature, { 159, 0 } }, { Quantity::SupplyVoltage, { 159, 1 } },
      { Quantity::TxBias, { 160, 0 } },      { Quantity::TxPower, { 160, 1 } },
      { Quantity::RxPower, { 160, 2 } },
   };
   const auto &[byte, bit] = bits.at( label.quantity );
   if ( !( file[page01OfCmis + byte] >> bit & 1 ) )
      return "ethtool shows monitors that CMIS page 01h has not";
   if ( label.quantity == Quantity::TxBias && ( file[page01OfCmis + 160] >> 3 & 3 ) == 3 )
      return "ethtool shows a bias of the reserved scale";
   if ( label.lane && file[210] >> ( label.lane - 1 ) & 1 )
      return "ethtool shows lanes of fibre that byte 210 says are not there";
   return label.isThreshold && file[210] == 0xFF ? "there is no lane that the thresholds are for"
                                                 : "";
}

// SFF-8636, lower bytes 1 and 113, page 00h bytes 147 and 220.
std::string reasonOfNoneInSff8636( const Bytes &file, const Label &label ) {
   const bool isTold = file[1] >= 8;
   const bool isPassive = file[147] >> 4 == 0x0A || file[147] >> 4 == 0x0B;
   const bool isThere = label.quantity == Quantity::Temperature     ? file[220] & 0x20
                        : label.quantity == Quantity::SupplyVoltage ? file[220] & 0x10
                        : label.quantity == Quantity::TxPower       ? file[220] & 0x04
                                                                    : file[220] & 0x3C;
   const bool isToBeTold = isTold || label.quantity == Quantity::TxPower;
   if ( isToBeTold && !isThere )
      return "ethtool shows monitors that byte 220 says are not there";
   if ( isPassive && ( label.lane || !isTold ) )
      return "ethtool shows monitors of a passive cable";
   return label.lane && file[113] >> ( label.lane - 1 ) & 1
             ? "ethtool shows lanes that byte 113 says are not there"
             : "";
}

// Why we have no such monitor.
std::string reasonOfNone( const Comparison &comparison, const Label &label ) {
   const Module &module = comparison.module;
   if ( module.standard == Standard::Cmis )
      return reasonOfNoneInCmis( comparison.file, label );
   if ( module.standard == Standard::Sff8472 )
      return module.hasDiagnostics ? "" : "ethtool reads A2h without the change of address";
   return reasonOfNoneInSff8636( comparison.file, label );
}

} // namespace

bool compareMonitor( Comparison &comparison, const Line &line ) {
   const auto &label = monitorLabelOf( line.label );
   if ( !label )
      return false;
   unsigned lane = label->lane;
   // One set of thresholds is for all lanes, of which lane 1 may be missing.
   for ( unsigned other = 1; label->isThreshold && lane && other <= 8; ++other )
      if ( monitorOf( comparison.module, label->quantity, other ) ) {
         lane = other;
         break;
      }
   const Monitor *monitor = monitorOf( comparison.module, label->quantity, lane );
   if ( !monitor ) {
      const std::string reason = reasonOfNone( comparison, *label );
      if ( reason.empty() )
         comparison.wrong( line, "no such monitor" );
      else
         comparison.differs( line, reason );
   } else if ( label->isThreshold ) {
      compareThreshold( comparison, line, *label, *monitor );
   } else if ( label->isFlag ) {
      compareFlag( comparison, line, *label, *monitor );
   } else {
      compareValue( comparison, line, *label, *monitor );
   }
   return true;
}

} // namespace OpticsTest
