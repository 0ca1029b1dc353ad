#include "host/JsonReader.h"

#include "host/Times.h"

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

Health::WallTime timeOf( const Json &json, const char *key ) {
   return timeIn( json.textOf( key ).value_or( "" ) ).value_or( Health::WallTime() );
}

Health::Level levelIn( const Json &json ) {
   return Health::levelOf( json.textOf( "level" ).value_or( "" ) )
      .value_or( Health::Level::Indeterminate );
}

Health::Extreme toExtreme( const Json &json ) {
   return { json.numberOf( "value" ).value_or( 0 ), timeOf( json, "at" ) };
}

std::optional<Health::Extreme> extremeIn( const Json *json ) {
   if ( !json )
      return {};
   return toExtreme( *json );
}

Health::ValueHealth toHealth( const Json &json ) {
   Health::ValueHealth health{ .level = levelIn( json ),
                               .since = timeOf( json, "since" ),
                               .changes =
                                  static_cast<uint64_t>( json.numberOf( "changes" ).value_or( 0 ) ),
                               .crossed = json.textOf( "crossed" ).value_or( "" ),
                               .lowest = extremeIn( json.find( "lowest" ) ),
                               .highest = extremeIn( json.find( "highest" ) ) };
   for ( const Json &reading : json.elementsOf( "last" ) )
      health.last.push_back( toExtreme( reading ) );
   if ( const Json *limits = json.find( "limits" ) )
      health.limits =
         BoardFiles::ValueLimits{ .lowCritical = limits->numberOf( "low_critical" ),
                                  .lowWarning = limits->numberOf( "low_warning" ),
                                  .highWarning = limits->numberOf( "high_warning" ),
                                  .highCritical = limits->numberOf( "high_critical" ) };
   return health;
}

bool isTrue( const Json &json, const char *key ) {
   const Json *value = json.find( key );
   return value && value->isTrue();
}

} // namespace

Reading toReading( const Json &json ) {
   return { .name = json.textOf( "name" ).value_or( "" ),
            .unit = json.textOf( "unit" ).value_or( "" ),
            .state = stateIn( json ),
            .value = toScalar( json.find( "value" ) ),
            .fault = toFault( json ) };
}

Health::Cause toCause( const Json &json ) {
   Health::Cause cause{ .key = json.textOf( "cause" ).value_or( "" ),
                        .object = json.textOf( "object" ).value_or( "" ),
                        .value = json.textOf( "value" ).value_or( "" ),
                        .level = levelIn( json ),
                        .words = json.textOf( "words" ).value_or( "" ),
                        .since = timeOf( json, "since" ),
                        .isAcknowledged = isTrue( json, "acknowledged" ),
                        .isHidden = isTrue( json, "hidden" ) };
   for ( const Json &object : json.elementsOf( "explains" ) )
      cause.explains.emplace_back( object.toText().value_or( "" ) );
   return cause;
}

ObjectReport toObject( const Json &json ) {
   ObjectReport object{ .name = json.textOf( "name" ).value_or( "" ),
                        .type = json.textOf( "type" ).value_or( "" ),
                        .state = stateIn( json ),
                        .fault = toFault( json ),
                        .age = json.numberOf( "age" ).value_or( 0 ) };
   if ( json.find( "level" ) )
      object.health = Health::ObjectHealth{ .level = levelIn( json ),
                                            .cause = json.textOf( "cause" ).value_or( "" ),
                                            .isAbsent = isTrue( json, "absent" ) };
   for ( const Json &value : json.elementsOf( "values" ) ) {
      object.values.push_back( { toReading( value ), value.numberOf( "age" ).value_or( 0 ) } );
      if ( object.health )
         object.health->values.push_back( toHealth( value ) );
   }
   return object;
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

std::optional<HealthReport> readHealth( const std::string &text ) {
   BoardFiles::Findings findings;
   const auto json = BoardFiles::parseJson( text, "health", findings );
   if ( !json || !json->find( "causes" ) )
      return {};
   HealthReport report{ .level = levelIn( *json ),
                        .objects = json->unsignedOf( "objects" ).value_or( 0 ),
                        .good = json->unsignedOf( "good" ).value_or( 0 ),
                        .absent = json->unsignedOf( "absent" ).value_or( 0 ) };
   for ( const Json &cause : json->elementsOf( "causes" ) )
      report.causes.push_back( toCause( cause ) );
   return report;
}

} // namespace Host
