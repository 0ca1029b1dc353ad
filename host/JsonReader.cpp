#include "JsonReader.h"

#include "check/Json.h"

namespace Host {
namespace {

using rapidjson::Value;

double ageOf( const Value &json ) {
   const Value *age = Json::find( &json, "age" );
   return age && age->IsNumber() ? age->GetDouble() : 0;
}

ObjectReport toObject( const Value &json ) {
   ObjectReport object{ .name = Json::textOf( json, "name" ),
                        .type = Json::textOf( json, "type" ),
                        .state =
                           stateOf( Json::textOf( json, "state" ) ).value_or( State::Unreadable ),
                        .fault = toFault( json ),
                        .age = ageOf( json ) };
   for ( const Value &value : Json::elements( Json::find( &json, "values" ) ) )
      object.values.push_back( { toReading( value ), ageOf( value ) } );
   return object;
}

} // namespace

Scalar toScalar( const Value *json ) {
   if ( !json )
      return {};
   if ( json->IsBool() )
      return json->GetBool();
   if ( json->IsInt64() )
      return json->GetInt64();
   if ( json->IsNumber() )
      return json->GetDouble();
   if ( const auto words = Json::toText( json ) )
      return std::string( *words );
   return {};
}

Fault toFault( const Value &json ) {
   Fault fault{ .words = Json::textOf( json, "fault" ) };
   if ( const Value *status = Json::find( &json, "status" ); status && status->IsInt() )
      fault.status = status->GetInt();
   return fault;
}

Reading toReading( const Value &json ) {
   return { .name = Json::textOf( json, "name" ),
            .unit = Json::textOf( json, "unit" ),
            .state = stateOf( Json::textOf( json, "state" ) ).value_or( State::Unreadable ),
            .value = toScalar( Json::find( &json, "value" ) ),
            .fault = toFault( json ) };
}

std::optional<BoardText> readBoard( const std::string &json ) {
   rapidjson::Document document;
   document.Parse( json.c_str(), json.size() );
   if ( document.HasParseError() || !Json::find( &document, "objects" ) )
      return {};
   BoardText board{ .board = Json::textOf( document, "board" ) };
   for ( const Value &object : Json::elements( Json::find( &document, "objects" ) ) )
      board.objects.push_back( toObject( object ) );
   return board;
}

} // namespace Host
