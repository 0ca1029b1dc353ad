#include "host/JsonReader.h"

namespace Host {
namespace {

using BoardFiles::Json;

Scalar toScalar( const Json *json ) {
   if ( !json )
      return {};
   if ( json->isBool() )
      return json->isTrue();
   if ( const auto integer = json->toInteger() )
      return *integer;
   if ( const auto number = json->toNumber() )
      return *number;
   if ( const auto words = json->toText() )
      return std::string( *words );
   return {};
}

State stateIn( const Json &json ) {
   return stateOf( json.textOf( "state" ).value_or( "" ) ).value_or( State::Unreadable );
}

Fault toFault( const Json &json ) {
   Fault fault{ .words = json.textOf( "fault" ).value_or( "" ) };
   const Json *status = json.find( "status" );
   if ( const auto number = status ? status->toInteger() : std::nullopt )
      fault.status = static_cast<int>( *number );
   return fault;
}

ObjectReport toObject( const Json &json ) {
   ObjectReport object{ .name = json.textOf( "name" ).value_or( "" ),
                        .type = json.textOf( "type" ).value_or( "" ),
                        .state = stateIn( json ),
                        .fault = toFault( json ),
                        .age = json.numberOf( "age" ).value_or( 0 ) };
   for ( const Json &value : json.elementsOf( "values" ) )
      object.values.push_back( { toReading( value ), value.numberOf( "age" ).value_or( 0 ) } );
   return object;
}

} // namespace

Reading toReading( const Json &json ) {
   return { .name = json.textOf( "name" ).value_or( "" ),
            .unit = json.textOf( "unit" ).value_or( "" ),
            .state = stateIn( json ),
            .value = toScalar( json.find( "value" ) ),
            .fault = toFault( json ) };
}

std::optional<BoardText> readBoard( const std::string &text ) {
   BoardFiles::Findings findings;
   const auto json = BoardFiles::parseJson( text, "board", findings );
   if ( !json || !json->find( "objects" ) )
      return {};
   BoardText board{ .board = json->textOf( "board" ).value_or( "" ) };
   for ( const Json &object : json->elementsOf( "objects" ) )
      board.objects.push_back( toObject( object ) );
   return board;
}

} // namespace Host
