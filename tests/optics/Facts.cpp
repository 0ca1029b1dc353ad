#include "Facts.h"

#include "optics/Decode.h"

#include <fmt/format.h>

namespace OpticsTest {

using namespace Optics;

namespace {

class Writer {
 public:
   explicit Writer( Facts &facts ) : facts_( facts ) {}

   void add( const std::string &name, const std::string &value ) {
      if ( !value.empty() )
         facts_[name] += value;
   }
   void add( const std::string &name, const std::optional<double> &value ) {
      if ( value )
         add( name, fmt::format( "{};", *value ) );
   }
   void add( const std::string &name, const std::optional<unsigned> &value ) {
      if ( value )
         add( name, fmt::format( "{};", *value ) );
   }
   void add( const std::string &name, const std::optional<bool> &value ) {
      if ( value )
         add( name, std::string( *value ? "yes" : "no" ) );
   }
   void add( const std::string &name, const std::optional<Code> &value ) {
      if ( value )
         add( name, fmt::format( "{} {}", value->number, value->name ) );
   }

 private:
   Facts &facts_;
};

void addIdentity( const Module &module, Writer &facts ) {
   facts.add( "revision", module.revision );
   facts.add( "vendor", module.vendor );
   facts.add( "oui", module.oui );
   facts.add( "part number", module.partNumber );
   facts.add( "vendor revision", module.vendorRevision );
   facts.add( "serial", module.serial );
   facts.add( "date code", module.dateCode );
   facts.add( "date", module.date );
   facts.add( "lot", module.lot );
   facts.add( "clei", module.clei );
   facts.add( "connector", module.connector );
   facts.add( "encoding", module.encoding );
   facts.add( "extended compliance", module.extendedCompliance );
   facts.add( "technology", module.technology );
   facts.add( "media type", module.mediaType );
   facts.add( "rate identifier", module.rateIdentifier );
   facts.add( "bit rate", module.bitRate );
   facts.add( "wavelength", module.wavelength );
   facts.add( "wavelength tolerance", module.wavelengthTolerance );
   facts.add( "power class", module.powerClass );
   facts.add( "maximum power", module.maximumPower );
   facts.add( "maximum temperature", module.maximumTemperature );
   facts.add( "minimum temperature", module.minimumTemperature );
   facts.add( "firmware", module.firmware );
   facts.add( "hardware", module.hardware );
   for ( const std::string &one : module.compliance )
      facts.add( "complies with " + one, std::string( "yes" ) );
   for ( const std::string &one : module.options )
      facts.add( "option " + one, std::string( "yes" ) );
   for ( const Length &length : module.lengths )
      facts.add( "length of " + length.medium,
                 fmt::format( "{}{};", length.metres, length.orMore ? " or more" : "" ) );
   for ( const Module::Attenuation &one : module.attenuations )
      facts.add( fmt::format( "attenuation at {} GHz", one.gigahertz ),
                 fmt::format( "{}", one.decibel ) );
   for ( const Application &one : module.applications ) {
      const std::string name = fmt::format( "application {}", one.number );
      facts.add( name + " host", std::optional( one.host ) );
      facts.add( name + " media", std::optional( one.media ) );
      facts.add( name + " lanes",
                 fmt::format( "{} {} {}", one.hostLanes, one.mediaLanes, one.hostStarts ) );
      if ( one.mediaStarts )
         facts.add( name + " starts", std::optional<unsigned>( *one.mediaStarts ) );
   }
   for ( const Checksum &one : module.checksums )
      facts.add( "checksum " + one.name, fmt::format( "{} {}", one.found, one.computed ) );
}

void addLane( const Lane &lane, Writer &facts ) {
   const auto name = [&]( const char *what ) {
      return fmt::format( "lane {} {}", lane.number, what );
   };
   facts.add( name( "rx los" ), lane.rxLos );
   facts.add( name( "tx los" ), lane.txLos );
   facts.add( name( "tx fault" ), lane.txFault );
   facts.add( name( "rx loss of lock" ), lane.rxLossOfLock );
   facts.add( name( "tx loss of lock" ), lane.txLossOfLock );
   facts.add( name( "tx equalizer fault" ), lane.txEqualizerFault );
   facts.add( name( "tx disabled" ), lane.txDisabled );
   facts.add( name( "rx disabled" ), lane.rxDisabled );
   facts.add( name( "tx output" ), lane.txOutputValid );
   facts.add( name( "rx output" ), lane.rxOutputValid );
   facts.add( name( "data path" ), lane.dataPathState );
   facts.add( name( "configuration" ), lane.configuration );
   facts.add( name( "application" ), lane.application );
}

void addMonitor( const Monitor &monitor, unsigned repeated, Writer &facts ) {
   const std::string quantity =
      monitor.lane ? fmt::format( "{} {}", nameOf( monitor.quantity ), monitor.lane )
                   : nameOf( monitor.quantity );
   // Two auxiliary monitors may measure the same.
   const std::string name = repeated ? quantity + " again" : quantity;
   facts.add( name + " value", monitor.value );
   facts.add( name + " high alarm", monitor.thresholds.highAlarm );
   facts.add( name + " low alarm", monitor.thresholds.lowAlarm );
   facts.add( name + " high warning", monitor.thresholds.highWarning );
   facts.add( name + " low warning", monitor.thresholds.lowWarning );
   facts.add( name + " high alarm flag", monitor.flags.highAlarm );
   facts.add( name + " low alarm flag", monitor.flags.lowAlarm );
   facts.add( name + " high warning flag", monitor.flags.highWarning );
   facts.add( name + " low warning flag", monitor.flags.lowWarning );
}

} // namespace

Facts factsOf( const Module &module ) {
   Facts all;
   Writer facts( all );
   addIdentity( module, facts );
   facts.add( "ready", module.isReady );
   facts.add( "interrupts", module.interrupts );
   facts.add( "state", module.state );
   facts.add( "fault cause", module.faultCause );
   facts.add( "low power", module.isLowPower );
   facts.add( "rx power is average", module.rxPowerIsAverage );
   for ( const std::string &flag : module.flags )
      facts.add( "flag " + flag, std::string( "yes" ) );
   for ( const Lane &lane : module.lanes )
      addLane( lane, facts );
   std::map<std::pair<Quantity, unsigned>, unsigned> seen;
   for ( const Monitor &monitor : module.monitors )
      addMonitor( monitor, seen[{ monitor.quantity, monitor.lane }]++, facts );
   return all;
}

std::vector<std::string> notIn( const Facts &all, const Facts &some ) {
   std::vector<std::string> wrong;
   for ( const auto &[name, value] : some ) {
      const auto found = all.find( name );
      if ( found == all.end() )
         wrong.push_back( fmt::format( "{} is {}, and should not be there", name, value ) );
      else if ( found->second != value )
         wrong.push_back( fmt::format( "{} is {}, and should be {}", name, value, found->second ) );
   }
   return wrong;
}

} // namespace OpticsTest
