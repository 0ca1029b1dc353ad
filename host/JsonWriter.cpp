#include "host/JsonWriter.h"

#include <cmath>

namespace Host {
namespace {

double toMilliseconds( double seconds ) { return std::round( seconds * 1000 ) / 1000; }

} // namespace

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

JsonWriter &JsonWriter::object( const ObjectReport &object ) {
   beginObject().member( "name", object.name ).member( "type", object.type );
   member( "state", nameOf( object.state ) ).member( "age", toMilliseconds( object.age ) );
   fault( object.fault ).key( "values" ).beginList();
   for ( const ValueReport &value : object.values ) {
      beginObject().reading( value.reading ).member( "age", toMilliseconds( value.age ) );
      fault( value.reading.fault ).endObject();
   }
   return endList().endObject();
}

std::string toJson( const ObjectReport &object ) {
   JsonWriter json;
   json.object( object );
   return json.text();
}

std::string toJson( std::string_view board, const BoardReport &report ) {
   JsonWriter json;
   json.beginObject().member( "board", board ).key( "objects" ).beginList();
   for ( const ObjectReport &object : report )
      json.object( object );
   return json.endList().endObject().text();
}

} // namespace Host
