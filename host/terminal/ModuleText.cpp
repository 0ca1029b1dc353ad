#include "host/terminal/ModuleText.h"

#include "host/session/ModuleReadings.h"
#include "optics/Decode.h"
#include "screen/Columns.h"
#include "screen/Width.h"
#include "screen/Wrap.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <utility>

namespace Host {
namespace {

using Optics::Module;
using Optics::Monitor;

// With the digits that the standards' units have.
std::string numberOf( double number, const std::string &unit ) {
   const int digits = unit == "V" ? 3 : unit == "mW" ? 4 : unit == "mA" ? 2 : 1;
   const std::string text = fmt::format( "{:.{}f}", number, digits );
   // A calibrated zero may be a little less.
   return text.find_first_of( "123456789" ) == text.npos && text.front() == '-' ? text.substr( 1 )
                                                                                : text;
}

// No light is the least that a power can be.
std::string dBmText( double milliwatts, const char *least ) {
   const auto power = Optics::dBm( milliwatts );
   return power && *power > -40 ? fmt::format( "{:.1f}", *power ) : least;
}

std::string named( const Optics::Code &code ) { return code.name; }

// "LC", and where there is more, each with what stands before it.
class Facts {
 public:
   explicit Facts( size_t columns ) : columns_( columns ) {}

   void add( std::string_view name, const std::string &text ) {
      if ( !text.empty() )
         Screen::wrap( lines, fmt::format( "{:<14}{}", name, text ), indent, columns_ );
   }
   void add( std::string_view name, const std::optional<Optics::Code> &code ) {
      if ( code )
         add( name, named( *code ) );
   }
   void add( std::string_view name, const std::optional<double> &number, std::string_view unit ) {
      if ( number )
         add( name, fmt::format( "{:g} {}", *number, unit ) );
   }

   std::vector<std::string> lines{};

 private:
   static constexpr size_t indent = 14;
   size_t columns_;
};

std::string lengthsOf( const Module &module ) {
   std::vector<std::string> lengths;
   for ( const Optics::Length &length : module.lengths )
      lengths.push_back( fmt::format( "{}{:g} m of {}", length.orMore ? "more than " : "",
                                      length.metres, length.medium ) );
   return fmt::format( "{}", fmt::join( lengths, ", " ) );
}

std::string attenuationsOf( const Module &module ) {
   std::vector<std::string> all;
   for ( const Module::Attenuation &one : module.attenuations )
      all.push_back( fmt::format( "{:g} dB at {:g} GHz", one.decibel, one.gigahertz ) );
   return fmt::format( "{}", fmt::join( all, ", " ) );
}

std::string powerOf( const Module &module ) {
   std::string text = module.powerClass ? fmt::format( "class {}", *module.powerClass ) : "";
   if ( module.maximumPower )
      text += fmt::format( "{}at most {:g} W", text.empty() ? "" : ", ", *module.maximumPower );
   if ( module.isLowPower == true )
      text += ( text.empty() ? "" : ", " ) + std::string( "low power now" );
   return text;
}

std::string caseOf( const Module &module ) {
   std::vector<std::string> limits;
   if ( module.minimumTemperature )
      limits.push_back( fmt::format( "from {:g}", *module.minimumTemperature ) );
   if ( module.maximumTemperature )
      limits.push_back( fmt::format( "up to {:g}", *module.maximumTemperature ) );
   return limits.empty() ? "" : fmt::format( "{} °C", fmt::join( limits, " " ) );
}

std::string stateOf( const Module &module ) {
   std::string text = module.state ? module.state->name : "";
   if ( module.isReady == false )
      text += ( text.empty() ? "" : ", " ) + std::string( "not ready" );
   if ( module.faultCause && module.faultCause->number != 0 )
      text += fmt::format( "{}fault: {}", text.empty() ? "" : ", ", module.faultCause->name );
   return text;
}

// A revision names its standard: "8636 2.8 to 2.10", "CMIS 5.2".
std::string standardOf( const Module &module ) {
   if ( module.revision.empty() )
      return Optics::nameOf( module.standard );
   return ( module.standard == Optics::Standard::Cmis ? "" : "SFF-" ) + module.revision;
}

std::string applicationOf( const Optics::Application &application ) {
   return fmt::format( "{} to {}, {} host and {} media lanes", application.host.name,
                       application.media.name, application.hostLanes, application.mediaLanes );
}

std::vector<std::string> usesOf( const Module &module ) {
   std::vector<std::string> uses = module.compliance;
   if ( module.extendedCompliance && module.extendedCompliance->number != 0 )
      uses.push_back( module.extendedCompliance->name );
   return uses;
}

void addIdentity( Facts &facts, const Module &module ) {
   facts.add( "vendor", fmt::format( "{}{}", Screen::orDash( module.vendor ),
                                     module.oui.empty() ? "" : " (" + module.oui + ")" ) );
   facts.add( "part",
              module.vendorRevision.empty()
                 ? module.partNumber
                 : fmt::format( "{}, revision {}", module.partNumber, module.vendorRevision ) );
   facts.add( "serial", module.serial );
   facts.add( "made", module.date.empty()
                         ? module.dateCode
                         : module.date + ( module.lot.empty() ? "" : ", lot " + module.lot ) );
   facts.add( "standard", standardOf( module ) );
   facts.add( "firmware", module.firmware );
   facts.add( "connector", module.connector );
   facts.add( "media", module.mediaType );
   facts.add( "for", fmt::format( "{}", fmt::join( usesOf( module ), ", " ) ) );
   facts.add( "technology", module.technology );
   facts.add( "bit rate", module.bitRate, "MBd" );
   facts.add( "encoding", module.encoding );
   facts.add( "wavelength", module.wavelength, "nm" );
   facts.add( "length", lengthsOf( module ) );
   facts.add( "loss", attenuationsOf( module ) );
   facts.add( "power", powerOf( module ) );
   facts.add( "case", caseOf( module ) );
   for ( const Optics::Application &application : module.applications )
      facts.add( fmt::format( "application {}", application.number ),
                 applicationOf( application ) );
   facts.add( "state", stateOf( module ) );
}

// The thresholds are the same for all lanes.
void addMonitors( std::vector<std::string> &lines, const Module &module ) {
   if ( module.monitors.empty() )
      return;
   lines.emplace_back();
   lines.push_back( fmt::format( "{:<19}{:>11}{:>14}{:>9}{:>9}{:>9}{:>9}", "", "", "", "low", "low",
                                 "high", "high" ) );
   lines.push_back( fmt::format( "{:<19}{:>11}{:>14}{:>9}{:>9}{:>9}{:>9}", "", "value", "dBm",
                                 "alarm", "warning", "warning", "alarm" ) );
   for ( const Monitor &monitor : module.monitors ) {
      const auto limit = [&]( const std::optional<double> &number ) {
         return number ? numberOf( *number, monitor.unit ) : std::string( "-" );
      };
      const std::string value =
         monitor.value ? numberOf( *monitor.value, monitor.unit ) + " " + monitor.unit : "-";
      std::string line = fmt::format( "{:<19}", valueNameOf( monitor, module ) );
      line += std::string(
         std::max<size_t>( 11, Screen::widthOf( value ) ) - Screen::widthOf( value ), ' ' );
      line += value;
      line += fmt::format(
         "{:>14}{:>9}{:>9}{:>9}{:>9}",
         monitor.unit == "mW" && monitor.value ? dBmText( *monitor.value, "-40.0 or less" ) : "",
         limit( monitor.thresholds.lowAlarm ), limit( monitor.thresholds.lowWarning ),
         limit( monitor.thresholds.highWarning ), limit( monitor.thresholds.highAlarm ) );
      lines.push_back( line );
   }
}

std::string laneText( const Optics::Lane &lane ) {
   std::vector<std::string> words;
   if ( lane.txDisabled == true )
      words.emplace_back( "transmitter off" );
   if ( lane.rxDisabled == true )
      words.emplace_back( "receiver output off" );
   if ( lane.application && *lane.application > 0 )
      words.push_back( fmt::format( "application {}", *lane.application ) );
   if ( lane.dataPathState )
      words.push_back( "data path " + lane.dataPathState->name );
   return fmt::format( "{}", fmt::join( words, ", " ) );
}

// Neighbours that are alike have one line.
void addLanes( std::vector<std::string> &lines, const Module &module ) {
   const auto &lanes = module.lanes;
   bool isFirst = true;
   for ( size_t i = 0; i < lanes.size(); ) {
      const std::string text = laneText( lanes[i] );
      size_t end = i + 1;
      while ( end < lanes.size() && laneText( lanes[end] ) == text )
         ++end;
      if ( !text.empty() ) {
         if ( std::exchange( isFirst, false ) )
            lines.emplace_back();
         lines.push_back( end == i + 1 ? fmt::format( "lane {}: {}", lanes[i].number, text )
                                       : fmt::format( "lanes {} to {}: {}", lanes[i].number,
                                                      lanes[end - 1].number, text ) );
      }
      i = end;
   }
}

std::string titleOf( const CageModule &module ) {
   std::string title = module.cage.empty() ? "" : module.cage + ": ";
   title +=
      module.module ? named( module.module->identifier ) : std::string( nameOf( module.state ) );
   if ( module.cage.empty() )
      return title;
   if ( module.module )
      title += fmt::format( ", read {:.0f} s ago", module.age );
   if ( const std::string fault = toText( module.fault ); !fault.empty() )
      title += fmt::format(
         "{} ({})", module.module ? ", now " + std::string( nameOf( module.state ) ) : "", fault );
   return title;
}

std::string temperatureOf( const Module &module ) {
   for ( const Monitor &monitor : module.monitors )
      if ( monitor.quantity == Optics::Quantity::Temperature && monitor.value )
         return numberOf( *monitor.value, monitor.unit );
   return "-";
}

// What it is made for, in a few letters: the first of its uses.
std::string typeOf( const Module &module ) {
   if ( !module.applications.empty() )
      return module.applications.front().media.name;
   const auto uses = usesOf( module );
   const std::string type = uses.empty() ? named( module.identifier ) : uses.back();
   return type.substr( 0, std::min( type.find( " or " ), type.find( ',' ) ) );
}

std::string rowNameOf( const Optics::Region &region ) {
   if ( !region.upper )
      return region.address == 0x50 ? "" : "A2h";
   return region.bank == 0 ? fmt::format( "page {:02x}h", region.page )
                           : fmt::format( "bank {}, page {:02x}h", region.bank, region.page );
}

} // namespace

std::vector<std::string> linesOf( const CageModule &module, size_t columns ) {
   std::vector<std::string> lines;
   Screen::wrap( lines, titleOf( module ), 3, columns );
   if ( !module.module )
      return lines;
   Facts facts( columns );
   addIdentity( facts, *module.module );
   lines.insert( lines.end(), facts.lines.begin(), facts.lines.end() );
   addMonitors( lines, *module.module );
   addLanes( lines, *module.module );
   lines.emplace_back();
   const auto flags = flagsOf( *module.module );
   Screen::wrap( lines,
                 fmt::format( "flags: {}", flags.empty()
                                              ? "none"
                                              : fmt::format( "{}", fmt::join( flags, ", " ) ) ),
                 3, columns );
   for ( const std::string &finding : module.module->findings )
      Screen::wrap( lines, "note: " + finding, 3, columns );
   return lines;
}

std::vector<std::string> tableOf( const std::vector<CageModule> &modules, size_t columns ) {
   constexpr size_t vendorColumn = 1, partColumn = 2, powerColumn = 6;
   Screen::Rows rows{ { "CAGE", "VENDOR", "PART", "SERIAL", "TYPE", "°C", "RX dBm", "WORST" } };
   size_t empty = 0;
   for ( const CageModule &one : modules ) {
      if ( one.state == State::Absent )
         ++empty;
      else if ( one.module )
         rows.push_back( { one.cage, Screen::orDash( one.module->vendor ),
                           Screen::orDash( one.module->partNumber ),
                           Screen::orDash( one.module->serial ), typeOf( *one.module ),
                           temperatureOf( *one.module ), Screen::orDash( lightOf( *one.module ) ),
                           one.state == State::Ok ? Screen::orDash( worstOf( *one.module ) )
                                                  : fmt::format( "{} ({})", nameOf( one.state ),
                                                                 toText( one.fault ) ) } );
      else
         rows.push_back( { one.cage, "-", "-", "-", "-", "-", "-",
                           fmt::format( "{} ({})", nameOf( one.state ), toText( one.fault ) ) } );
   }
   std::vector<std::string> lines = Screen::inColumns(
      rows, columns,
      { .hasNotes = true, .dispensable = { vendorColumn, partColumn }, .wrapped = powerColumn } );
   if ( empty > 0 )
      lines.push_back( fmt::format( "{} of {} cages are empty", empty, modules.size() ) );
   return lines;
}

std::string lightOf( const Module &module ) {
   std::vector<std::string> powers;
   for ( const Monitor &monitor : module.monitors )
      if ( monitor.quantity == Optics::Quantity::RxPower )
         powers.push_back( monitor.value ? dBmText( *monitor.value, "<=-40" ) : "-" );
   return fmt::format( "{}", fmt::join( powers, " " ) );
}

std::string leastLightOf( const Module &module ) {
   std::optional<double> least;
   for ( const Monitor &monitor : module.monitors )
      if ( monitor.quantity == Optics::Quantity::RxPower && monitor.value )
         least = std::min( least.value_or( *monitor.value ), *monitor.value );
   return least ? dBmText( *least, "<=-40" ) : "";
}

std::vector<std::string> hexLinesOf( const Optics::Image &image ) {
   constexpr size_t onALine = 16;
   std::vector<std::string> lines;
   for ( const auto &[region, bytes] : image.regions() ) {
      if ( const std::string name = rowNameOf( region ); !name.empty() )
         lines.push_back( name );
      for ( size_t row = 0; row < bytes.size(); row += onALine ) {
         std::string line = fmt::format( "{:3}:", ( region.upper ? bytes.size() : 0 ) + row );
         for ( size_t i = row; i < row + onALine; ++i )
            line += bytes[i] ? fmt::format( " {:02x}", *bytes[i] ) : " --";
         lines.push_back( line );
      }
   }
   return lines;
}

} // namespace Host
