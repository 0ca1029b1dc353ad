#include "host/JsonReader.h"

#include "boardfiles/Json.h"

namespace Host {
namespace {

using rapidjson::Value;

double ageOf( const Value &json ) {
   const Value *age = BoardFiles::Json::find( &json, "age" );
   return age && age->IsNumber() ? age->GetDouble() : 0;
}

Scalar toScalar( const Value *json ) {
   if ( !json )
      return {};
   if ( json->IsBool() )
      return json->GetBool();
   if ( json->IsInt64() )
      return json->GetInt64();
   if ( json->IsNumber() )
      return json->GetDouble();
   if ( const auto words = BoardFiles::Json::toText( json ) )
      return std::string( *words );
   return {};
}

Fault toFault( const Value &json ) {
   Fault fault{ .words = BoardFiles::Json::textOf( json, "fault" ) };
   if ( const Value *status = BoardFiles::Json::find( &json, "status" ); status && status->IsInt() )
      fault.status = status->GetInt();
   return fault;
}

ObjectReport toObject( const Value &json ) {
   ObjectReport object{
      .name = BoardFiles::Json::textOf( json, "name" ),
      .type = BoardFiles::Json::textOf( json, "type" ),
      .state = stateOf( BoardFiles::Json::textOf( json, "state" ) ).value_or( State::Unreadable ),
      .fault = toFault( json ),
      .age = ageOf( json )
   };
   for ( const Value &value :
         BoardFiles::Json::elements( BoardFiles::Json::find( &json, "values" ) ) )
      object.values.push_back( { toReading( value ), ageOf( value ) } );
   return object;
}

} // namespace

Reading toReading( const Value &json ) {
   return { .name = BoardFiles::Json::textOf( json, "name" ),
            .unit = BoardFiles::Json::textOf( json, "unit" ),
            .state =
               stateOf( BoardFiles::Json::textOf( json, "state" ) ).value_or( State::Unreadable ),
            .value = toScalar( BoardFiles::Json::find( &json, "value" ) ),
            .fault = toFault( json ) };
}

std::optional<BoardText> readBoard( const std::string &json ) {
   rapidjson::Document document;
   document.Parse( json.c_str(), json.size() );
   if ( document.HasParseError() || !BoardFiles::Json::find( &document, "objects" ) )
      return {};
   BoardText board{ .board = BoardFiles::Json::textOf( document, "board" ) };
   for ( const Value &object :
         BoardFiles::Json::elements( BoardFiles::Json::find( &document, "objects" ) ) )
      board.objects.push_back( toObject( object ) );
   return board;
}

} // namespace Host
