#include "plugin/Messages.h"

#include "JsonReader.h"
#include "JsonWriter.h"
#include "check/Json.h"

namespace Host {
namespace {

using rapidjson::Value;

template <class... F>
struct Overloaded : F... {
   using F::operator()...;
};
template <class... F>
Overloaded( F... ) -> Overloaded<F...>;

std::string line( const JsonWriter &json ) { return json.text() + "\n"; }

void write( JsonWriter &json, const AddCommand &add ) {
   const ObjectDescription &what = add.description;
   json.member( "do", "add" ).member( "object", static_cast<std::int64_t>( add.object ) );
   json.member( "kind", nameOf( what.kind ) ).member( "name", what.name );
   json.member( "text", what.text ).member( "alert", double{ what.alert } );
   json.member( "critical", double{ what.critical } );
   json.member( "value", std::int64_t{ what.value } );
}

void write( JsonWriter &json, const ActCommand &act ) {
   json.member( "do", "act" ).member( "object", static_cast<std::int64_t>( act.object ) );
   json.member( "operation", act.action.operation ).key( "arguments" ).beginList();
   for ( const std::int64_t argument : act.action.arguments )
      json.value( argument );
   json.endList();
}

// Members of a message, told with the default where they are missing.
float number( const Value &json, const char *key ) {
   const Value *value = Json::find( &json, key );
   return value && value->IsNumber() ? static_cast<float>( value->GetDouble() ) : 0;
}
Kind kind( const Value &json ) {
   return kindOf( Json::textOf( json, "kind" ) ).value_or( Kind::System );
}

} // namespace

std::string encode( const Command &command ) {
   JsonWriter json;
   json.beginObject();
   std::visit( Overloaded{
                  [&]( const LoadCommand &load ) {
                     json.member( "do", "load" ).member( "plugin", load.plugin );
                     json.member( "topology", load.topology );
                  },
                  [&]( const InitCommand &init ) {
                     json.member( "do", "init" ).member( "kind", nameOf( init.kind ) );
                  },
                  [&]( const AddCommand &add ) { write( json, add ); },
                  [&]( const ReadCommand &read ) {
                     json.member( "do", "read" );
                     json.member( "object", static_cast<std::int64_t>( read.object ) );
                  },
                  [&]( const ActCommand &act ) { write( json, act ); },
               },
               command );
   return line( json.endObject() );
}

std::string encode( const Event &event ) {
   JsonWriter json;
   json.beginObject();
   std::visit( Overloaded{
                  [&]( const Begun &begun ) {
                     json.member( "event", "begun" ).member( "operation", begun.operation );
                  },
                  [&]( const Trace &trace ) {
                     json.member( "event", "trace" );
                     json.member( "level", std::int64_t{ trace.level } );
                     json.member( "text", trace.text );
                     if ( trace.timerOf )
                        json.member( "object", static_cast<std::int64_t>( *trace.timerOf ) );
                  },
                  [&]( const Reading &reading ) {
                     json.member( "event", "reading" ).reading( reading ).fault( reading.fault );
                  },
                  [&]( const Done &done ) {
                     json.member( "event", "done" ).member( "ok", !done.fault );
                     if ( done.fault )
                        json.fault( *done.fault );
                  },
               },
               event );
   return line( json.endObject() );
}

std::optional<Command> decodeCommand( const std::string &line ) {
   rapidjson::Document json;
   json.Parse( line.c_str(), line.size() );
   if ( json.HasParseError() )
      return {};
   const std::string what = Json::textOf( json, "do" );
   const std::size_t object = Json::toUnsigned( Json::find( &json, "object" ) ).value_or( 0 );
   if ( what == "load" )
      return LoadCommand{ Json::textOf( json, "plugin" ), Json::textOf( json, "topology" ) };
   if ( what == "init" )
      return InitCommand{ kind( json ) };
   if ( what == "read" )
      return ReadCommand{ object };
   if ( what == "act" ) {
      ActCommand act{ object, { .operation = Json::textOf( json, "operation" ) } };
      for ( const Value &argument : Json::elements( Json::find( &json, "arguments" ) ) )
         act.action.arguments.push_back( argument.IsInt64() ? argument.GetInt64() : 0 );
      return act;
   }
   if ( what == "add" )
      return AddCommand{ object,
                         { .kind = kind( json ),
                           .name = Json::textOf( json, "name" ),
                           .text = Json::textOf( json, "text" ),
                           .alert = number( json, "alert" ),
                           .critical = number( json, "critical" ),
                           .value = static_cast<std::uint8_t>( number( json, "value" ) ) } };
   return {};
}

std::optional<Event> decodeEvent( const std::string &line ) {
   rapidjson::Document json;
   json.Parse( line.c_str(), line.size() );
   if ( json.HasParseError() )
      return {};
   const std::string what = Json::textOf( json, "event" );
   if ( what == "begun" )
      return Begun{ Json::textOf( json, "operation" ) };
   if ( what == "trace" )
      return Trace{ static_cast<int>( number( json, "level" ) ), Json::textOf( json, "text" ),
                    Json::toUnsigned( Json::find( &json, "object" ) ) };
   if ( what == "reading" )
      return toReading( json );
   if ( what == "done" )
      return Done{ Json::isTrue( Json::find( &json, "ok" ) ) ? std::nullopt
                                                             : std::optional( toFault( json ) ) };
   return {};
}

} // namespace Host
