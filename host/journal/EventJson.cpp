#include "host/journal/EventJson.h"

#include "host/JsonWriter.h"
#include "host/Times.h"

#include <cmath>

namespace Host {
namespace {

using What = Health::Event::What;

std::optional<What> whatOf( std::string_view name ) {
   for ( const What what : { What::Set, What::Clear, What::Acknowledged, What::Note } )
      if ( nameOf( what ) == name )
         return what;
   return {};
}

void add( JsonWriter &json, std::string_view name, const std::string &text ) {
   if ( !text.empty() )
      json.member( name, text );
}

// JSON has no other numbers.
void add( JsonWriter &json, std::string_view name, const std::optional<double> &number ) {
   if ( number && std::isfinite( *number ) )
      json.member( name, *number );
}

} // namespace

std::string toJson( const Health::Event &event ) {
   JsonWriter json;
   json.beginObject();
   if ( event.id != 0 )
      json.member( "id", static_cast<int64_t>( event.id ) );
   json.member( "time", timeText( event.time ) ).member( "what", nameOf( event.what ) );
   json.member( "cause", event.cause );
   add( json, "object", event.object );
   add( json, "value", event.value );
   json.member( "level", nameOf( event.level ) ).member( "words", event.words );
   add( json, "number", event.number );
   add( json, "limit", event.limit );
   add( json, "unit", event.unit );
   if ( !event.explains.empty() ) {
      json.key( "explains" ).beginList();
      for ( const std::string &object : event.explains )
         json.value( object );
      json.endList();
   }
   return json.endObject().text();
}

std::optional<Health::Event> readEvent( const std::string &text ) {
   BoardFiles::Findings findings;
   const auto json = BoardFiles::parseJson( text, "event", findings );
   return json ? toEvent( *json ) : std::nullopt;
}

std::optional<Health::Event> toEvent( const BoardFiles::Json &json ) {
   const auto time = timeIn( json.textOf( "time" ).value_or( "" ) );
   const auto what = whatOf( json.textOf( "what" ).value_or( "" ) );
   const auto level = Health::levelOf( json.textOf( "level" ).value_or( "" ) );
   const auto cause = json.textOf( "cause" );
   if ( !time || !what || !level || !cause )
      return {};
   Health::Event event{ .time = *time,
                        .what = *what,
                        .cause = *cause,
                        .object = json.textOf( "object" ).value_or( "" ),
                        .value = json.textOf( "value" ).value_or( "" ),
                        .level = *level,
                        .words = json.textOf( "words" ).value_or( "" ),
                        .number = json.numberOf( "number" ),
                        .limit = json.numberOf( "limit" ),
                        .unit = json.textOf( "unit" ).value_or( "" ) };
   const BoardFiles::Json *id = json.find( "id" );
   event.id = static_cast<uint64_t>( id ? id->toInteger().value_or( 0 ) : 0 );
   for ( const BoardFiles::Json &object : json.elementsOf( "explains" ) )
      event.explains.emplace_back( object.toText().value_or( "" ) );
   return event;
}

} // namespace Host
