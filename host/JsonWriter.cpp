#include "host/JsonWriter.h"

#include "host/Times.h"
#include "http/Utf8.h"

#include <algorithm>
#include <cmath>

namespace Host {
namespace {

double toMilliseconds( double seconds ) { return std::round( seconds * 1000 ) / 1000; }

void write( JsonWriter &json, const BoardFiles::ValueLimits &limits ) {
   json.key( "limits" ).beginObject();
   const auto limit = [&json]( const char *name, const std::optional<double> &number ) {
      if ( number )
         json.member( name, *number );
   };
   limit( "low_critical", limits.lowCritical );
   limit( "low_warning", limits.lowWarning );
   limit( "high_warning", limits.highWarning );
   limit( "high_critical", limits.highCritical );
   json.endObject();
}

void write( JsonWriter &json, const Health::ValueHealth &health, JsonWriter::Detail detail ) {
   json.member( "level", nameOf( health.level ) );
   if ( detail == JsonWriter::Detail::All )
      json.member( "since", timeText( health.since ) )
         .member( "changes", static_cast<int64_t>( health.changes ) );
   if ( !health.crossed.empty() )
      json.member( "crossed", health.crossed );
   if ( detail == JsonWriter::Detail::Lasting )
      return;
   if ( health.limits )
      write( json, *health.limits );
   const auto extreme = [&json]( const Health::Extreme &what ) {
      json.beginObject().member( "value", what.number ).member( "at", timeText( what.at ) );
      json.endObject();
   };
   if ( health.lowest )
      extreme( ( json.key( "lowest" ), *health.lowest ) );
   if ( health.highest )
      extreme( ( json.key( "highest" ), *health.highest ) );
   if ( health.last.empty() )
      return;
   json.key( "last" ).beginList();
   for ( const Health::Extreme &reading : health.last )
      extreme( reading );
   json.endList();
}

} // namespace

JsonWriter &JsonWriter::value( std::string_view text ) {
   // Nearly all texts are plain.
   const bool isPlain = std::none_of( text.begin(), text.end(), []( char c ) { return c < 0; } );
   const std::string valid = isPlain ? std::string() : Http::withoutOtherBytes( text );
   if ( !isPlain )
      text = valid;
   writer_.String( text.data(), static_cast<rapidjson::SizeType>( text.size() ) );
   return *this;
}

JsonWriter &JsonWriter::fault( const Fault &fault ) {
   if ( fault.status )
      member( "status", int64_t{ *fault.status } );
   if ( !fault.words.empty() )
      member( "fault", fault.words );
   return *this;
}

JsonWriter &JsonWriter::reading( const Reading &reading ) {
   member( "name", reading.name );
   if ( !reading.unit.empty() )
      member( "unit", reading.unit );
   member( "state", nameOf( reading.state ) );
   if ( !std::holds_alternative<std::monostate>( reading.value ) )
      std::visit( [&]( const auto &what ) { member( "value", what ); }, reading.value );
   return *this;
}

JsonWriter &JsonWriter::place( const BoardFiles::ChipPlace &chip ) {
   member( "bus", chip.bus ).member( "path", chip.path );
   return member( "address", int64_t{ chip.address } );
}

JsonWriter &JsonWriter::objectState( const ObjectReport &object, Detail detail ) {
   member( "name", object.name ).member( "type", object.type );
   member( "state", nameOf( object.state ) );
   if ( detail == Detail::All )
      member( "age", toMilliseconds( object.age ) );
   fault( object.fault );
   if ( object.health ) {
      member( "level", nameOf( object.health->level ) );
      if ( !object.health->cause.empty() )
         member( "cause", object.health->cause );
      if ( object.health->isAbsent )
         member( "absent", true );
   }
   return *this;
}

JsonWriter &JsonWriter::members( const ObjectReport &object, Detail detail ) {
   objectState( object, detail );
   key( "values" ).beginList();
   for ( size_t i = 0; i < object.values.size(); ++i ) {
      const ValueReport &value = object.values[i];
      beginObject().reading( value.reading );
      if ( detail == Detail::All )
         member( "age", toMilliseconds( value.age ) );
      fault( value.reading.fault );
      if ( object.health && i < object.health->values.size() )
         write( *this, object.health->values[i], detail );
      endObject();
   }
   return endList();
}

JsonWriter &JsonWriter::time() {
   using namespace std::chrono;
   return member( "time", timeText( floor<milliseconds>( system_clock::now() ) ) );
}

JsonWriter &JsonWriter::cause( const Health::Cause &cause ) {
   beginObject().member( "cause", cause.key );
   if ( !cause.object.empty() )
      member( "object", cause.object );
   if ( !cause.value.empty() )
      member( "value", cause.value );
   member( "level", nameOf( cause.level ) ).member( "words", cause.words );
   member( "since", timeText( cause.since ) ).member( "acknowledged", cause.isAcknowledged );
   member( "hidden", cause.isHidden ).key( "explains" ).beginList();
   for ( const std::string &object : cause.explains )
      value( object );
   return endList().endObject();
}

std::string toJson( const ObjectReport &object ) {
   JsonWriter json;
   json.beginObject().members( object );
   return json.time().endObject().text();
}

std::string toJson( std::string_view board, const BoardReport &report ) {
   JsonWriter json;
   json.beginObject().member( "board", board ).key( "objects" ).beginList();
   for ( const ObjectReport &object : report )
      json.beginObject().members( object ).endObject();
   return json.endList().time().endObject().text();
}

std::string toJson( std::string_view board, const HealthReport &report ) {
   JsonWriter json;
   json.beginObject().member( "board", board ).member( "level", nameOf( report.level ) );
   json.member( "objects", static_cast<int64_t>( report.objects ) );
   json.member( "good", static_cast<int64_t>( report.good ) );
   json.member( "absent", static_cast<int64_t>( report.absent ) ).key( "causes" ).beginList();
   for ( const Health::Cause &cause : report.causes )
      json.cause( cause );
   return json.endList().time().endObject().text();
}

} // namespace Host
