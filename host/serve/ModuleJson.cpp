#include "host/serve/ModuleJson.h"

#include "boardfiles/Json.h"
#include "host/JsonWriter.h"
#include "host/session/ModuleReadings.h"
#include "optics/Decode.h"

#include <algorithm>
#include <cctype>
#include <fmt/ranges.h>
#include <stdexcept>

namespace Host {
namespace {

using BoardFiles::Json;
using Optics::Code;

void member( JsonWriter &json, const char *name, const std::string &text ) {
   if ( !text.empty() )
      json.member( name, std::string_view( text ) );
}

void member( JsonWriter &json, const char *name, const std::optional<double> &number ) {
   if ( number )
      json.member( name, *number );
}

void member( JsonWriter &json, const char *name, const std::optional<bool> &flag ) {
   if ( flag )
      json.member( name, *flag );
}

void member( JsonWriter &json, const char *name, const std::optional<Code> &code ) {
   if ( code )
      json.key( name )
         .beginObject()
         .member( "code", int64_t{ code->number } )
         .member( "name", std::string_view( code->name ) )
         .endObject();
}

void member( JsonWriter &json, const char *name, const std::vector<std::string> &texts ) {
   if ( texts.empty() )
      return;
   json.key( name ).beginList();
   for ( const std::string &text : texts )
      json.value( std::string_view( text ) );
   json.endList();
}

void identity( JsonWriter &json, const Optics::Module &module ) {
   json.member( "standard", nameOf( module.standard ) );
   member( json, "revision", module.revision );
   member( json, "identifier", std::optional( module.identifier ) );
   member( json, "vendor", module.vendor );
   member( json, "oui", module.oui );
   member( json, "part_number", module.partNumber );
   member( json, "vendor_revision", module.vendorRevision );
   member( json, "serial", module.serial );
   member( json, "date_code", module.dateCode );
   member( json, "date", module.date );
   member( json, "lot", module.lot );
   member( json, "clei", module.clei );
   member( json, "connector", module.connector );
   member( json, "encoding", module.encoding );
   member( json, "extended_compliance", module.extendedCompliance );
   member( json, "technology", module.technology );
   member( json, "media_type", module.mediaType );
   member( json, "rate_identifier", module.rateIdentifier );
   member( json, "compliance", module.compliance );
   member( json, "options", module.options );
   member( json, "bit_rate", module.bitRate );
   member( json, "wavelength", module.wavelength );
   member( json, "wavelength_tolerance", module.wavelengthTolerance );
   if ( module.powerClass )
      json.member( "power_class", int64_t{ *module.powerClass } );
   member( json, "maximum_power", module.maximumPower );
   member( json, "maximum_temperature", module.maximumTemperature );
   member( json, "minimum_temperature", module.minimumTemperature );
   member( json, "firmware", module.firmware );
   member( json, "hardware", module.hardware );
}

void media( JsonWriter &json, const Optics::Module &module ) {
   json.key( "lengths" ).beginList();
   for ( const Optics::Length &length : module.lengths )
      json.beginObject()
         .member( "medium", std::string_view( length.medium ) )
         .member( "metres", length.metres )
         .member( "or_more", length.orMore )
         .endObject();
   json.endList().key( "attenuations" ).beginList();
   for ( const Optics::Module::Attenuation &attenuation : module.attenuations )
      json.beginObject()
         .member( "gigahertz", attenuation.gigahertz )
         .member( "decibel", attenuation.decibel )
         .endObject();
   json.endList().key( "applications" ).beginList();
   for ( const Optics::Application &application : module.applications ) {
      json.beginObject().member( "number", int64_t{ application.number } );
      member( json, "host", std::optional( application.host ) );
      member( json, "media", std::optional( application.media ) );
      json.member( "host_lanes", int64_t{ application.hostLanes } )
         .member( "media_lanes", int64_t{ application.mediaLanes } )
         .member( "host_starts", int64_t{ application.hostStarts } );
      if ( application.mediaStarts )
         json.member( "media_starts", int64_t{ *application.mediaStarts } );
      json.endObject();
   }
   json.endList();
}

// A power is in dBm, too; null for no light.
void monitors( JsonWriter &json, const Optics::Module &module ) {
   json.key( "monitors" ).beginList();
   for ( const Optics::Monitor &monitor : module.monitors ) {
      json.beginObject()
         .member( "name", std::string_view( valueNameOf( monitor, module ) ) )
         .member( "quantity", nameOf( monitor.quantity ) )
         .member( "lane", int64_t{ monitor.lane } )
         .member( "unit", std::string_view( monitor.unit ) );
      member( json, "value", monitor.value );
      if ( monitor.unit == "mW" && monitor.value ) {
         json.key( "dbm" );
         const auto power = Optics::dBm( *monitor.value );
         power ? json.value( *power ) : json.value( std::monostate() );
      }
      json.key( "thresholds" ).beginObject();
      member( json, "high_alarm", monitor.thresholds.highAlarm );
      member( json, "high_warning", monitor.thresholds.highWarning );
      member( json, "low_warning", monitor.thresholds.lowWarning );
      member( json, "low_alarm", monitor.thresholds.lowAlarm );
      json.endObject().key( "flags" ).beginObject();
      member( json, "high_alarm", monitor.flags.highAlarm );
      member( json, "high_warning", monitor.flags.highWarning );
      member( json, "low_warning", monitor.flags.lowWarning );
      member( json, "low_alarm", monitor.flags.lowAlarm );
      json.endObject().endObject();
   }
   json.endList();
}

void lanes( JsonWriter &json, const Optics::Module &module ) {
   json.key( "lanes" ).beginList();
   for ( const Optics::Lane &lane : module.lanes ) {
      json.beginObject().member( "number", int64_t{ lane.number } );
      member( json, "rx_los", lane.rxLos );
      member( json, "tx_los", lane.txLos );
      member( json, "tx_fault", lane.txFault );
      member( json, "rx_loss_of_lock", lane.rxLossOfLock );
      member( json, "tx_loss_of_lock", lane.txLossOfLock );
      member( json, "tx_equalizer_fault", lane.txEqualizerFault );
      member( json, "tx_disabled", lane.txDisabled );
      member( json, "rx_disabled", lane.rxDisabled );
      member( json, "tx_output_valid", lane.txOutputValid );
      member( json, "rx_output_valid", lane.rxOutputValid );
      member( json, "data_path_state", lane.dataPathState );
      member( json, "configuration", lane.configuration );
      if ( lane.application )
         json.member( "application", int64_t{ *lane.application } );
      json.endObject();
   }
   json.endList();
}

void state( JsonWriter &json, const Optics::Module &module ) {
   json.member( "has_diagnostics", module.hasDiagnostics )
      .member( "externally_calibrated", module.isExternallyCalibrated )
      .member( "flat", module.isFlat );
   member( json, "rx_power_is_average", module.rxPowerIsAverage );
   member( json, "ready", module.isReady );
   member( json, "interrupts", module.interrupts );
   member( json, "module_state", module.state );
   member( json, "fault_cause", module.faultCause );
   member( json, "low_power", module.isLowPower );
   json.member( "worst", std::string_view( worstOf( module ) ) );
   member( json, "flags", module.flags );
   json.key( "checksums" ).beginList();
   for ( const Optics::Checksum &checksum : module.checksums )
      json.beginObject()
         .member( "name", std::string_view( checksum.name ) )
         .member( "found", int64_t{ checksum.found } )
         .member( "computed", int64_t{ checksum.computed } )
         .endObject();
   json.endList();
   member( json, "findings", module.findings );
}

// Each run of bytes that were read, as hexadecimal digits.
void memory( JsonWriter &json, const Optics::Image &image ) {
   json.key( "memory" ).beginList();
   for ( const Optics::Image::Run &run : image.runs() ) {
      json.beginObject().member( "address", int64_t{ run.region.address } );
      if ( run.region.upper )
         json.member( "bank", int64_t{ run.region.bank } )
            .member( "page", int64_t{ run.region.page } );
      json.member( "first", int64_t{ run.first } )
         .member( "bytes", std::string_view( fmt::format( "{:02x}", fmt::join( run.bytes, "" ) ) ) )
         .endObject();
   }
   json.endList();
}

void write( JsonWriter &json, const CageModule &module ) {
   json.beginObject()
      .member( "cage", std::string_view( module.cage ) )
      .member( "state", nameOf( module.state ) )
      .member( "age", module.age )
      .fault( module.fault );
   if ( module.module ) {
      json.key( "module" ).beginObject();
      identity( json, *module.module );
      media( json, *module.module );
      state( json, *module.module );
      monitors( json, *module.module );
      lanes( json, *module.module );
      json.endObject();
   }
   memory( json, module.image );
   json.endObject();
}

std::vector<uint8_t> bytesOf( const std::string &digits ) {
   const auto isDigit = []( unsigned char one ) { return std::isxdigit( one ) != 0; };
   if ( digits.size() % 2 != 0 || !std::all_of( digits.begin(), digits.end(), isDigit ) )
      throw std::out_of_range( "no hexadecimal digits" );
   std::vector<uint8_t> bytes;
   for ( size_t i = 0; i < digits.size(); i += 2 )
      bytes.push_back( static_cast<uint8_t>( std::stoul( digits.substr( i, 2 ), nullptr, 16 ) ) );
   return bytes;
}

// Throws std::out_of_range for what is no memory.
void readPiece( const Json &json, Optics::Image &image ) {
   const auto byte = [&json]( const char *name ) {
      const uint32_t number = json.unsignedOf( name ).value_or( 0 );
      if ( number > 0xFF )
         throw std::out_of_range( name );
      return static_cast<uint8_t>( number );
   };
   const Optics::Region region{ byte( "address" ), json.find( "page" ) != nullptr, byte( "bank" ),
                                byte( "page" ) };
   image.put( region, byte( "first" ), bytesOf( json.textOf( "bytes" ).value_or( "" ) ) );
}

std::optional<CageModule> moduleIn( const Json &json ) {
   const auto state = stateOf( json.textOf( "state" ).value_or( "" ) );
   if ( !state )
      return {};
   CageModule module{ .cage = json.textOf( "cage" ).value_or( "" ),
                      .state = *state,
                      .fault = { .words = json.textOf( "fault" ).value_or( "" ) },
                      .age = json.numberOf( "age" ).value_or( 0 ) };
   if ( const Json *status = json.find( "status" ) )
      if ( const auto number = status->toInteger() )
         module.fault.status = static_cast<int>( *number );
   try {
      for ( const Json &piece : json.elementsOf( "memory" ) )
         readPiece( piece, module.image );
   } catch ( const std::out_of_range & ) {
      return {};
   }
   decode( module );
   return module;
}

} // namespace

std::string toJson( const CageModule &module ) {
   JsonWriter json;
   write( json, module );
   return json.text();
}

std::string toJson( const std::string &board, const std::vector<CageModule> &modules ) {
   JsonWriter json;
   json.beginObject().member( "board", std::string_view( board ) ).key( "modules" ).beginList();
   for ( const CageModule &module : modules )
      write( json, module );
   json.endList().endObject();
   return json.text();
}

std::optional<CageModule> readModule( const std::string &text ) {
   BoardFiles::Findings findings;
   const auto json = BoardFiles::parseJson( text, "answer", findings );
   return json ? moduleIn( *json ) : std::nullopt;
}

std::optional<std::vector<CageModule>> readModules( const std::string &text ) {
   BoardFiles::Findings findings;
   const auto json = BoardFiles::parseJson( text, "answer", findings );
   if ( !json || !json->find( "modules" ) )
      return {};
   std::vector<CageModule> modules;
   for ( const Json &element : json->elementsOf( "modules" ) ) {
      auto module = moduleIn( element );
      if ( !module )
         return {};
      modules.push_back( std::move( *module ) );
   }
   return modules;
}

} // namespace Host
