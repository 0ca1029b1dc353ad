#include "host/plugin/Messages.h"

#include "boardfiles/Json.h"
#include "host/JsonReader.h"
#include "host/JsonWriter.h"

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
   const BoardFiles::ObjectDescription &what = add.description;
   json.member( "do", "add" ).member( "object", static_cast<int64_t>( add.object ) );
   json.member( "kind", nameOf( what.kind ) ).member( "name", what.name );
   json.member( "text", what.text ).member( "alert", double{ what.alert } );
   json.member( "critical", double{ what.critical } );
   json.member( "value", int64_t{ what.value } );
}

void write( JsonWriter &json, const ActCommand &act ) {
   json.member( "do", "act" ).member( "object", static_cast<int64_t>( act.object ) );
   json.member( "operation", act.action.operation ).key( "arguments" ).beginList();
   for ( const int64_t argument : act.action.arguments )
      json.value( argument );
   json.endList();
}

// Members of a message, told with the default where they are missing.
float number( const Value &json, const char *key ) {
   const Value *value = BoardFiles::Json::find( &json, key );
   return value && value->IsNumber() ? static_cast<float>( value->GetDouble() ) : 0;
}
BoardFiles::Kind kind( const Value &json ) {
   return BoardFiles::kindOf( BoardFiles::Json::textOf( json, "kind" ) )
      .value_or( BoardFiles::Kind::System );
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
                     json.member( "object", static_cast<int64_t>( read.object ) );
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
                     json.member( "level", int64_t{ trace.level } );
                     json.member( "text", trace.text );
                     if ( trace.timerOf )
                        json.member( "object", static_cast<int64_t>( *trace.timerOf ) );
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
   const std::string what = BoardFiles::Json::textOf( json, "do" );
   const size_t object =
      BoardFiles::Json::toUnsigned( BoardFiles::Json::find( &json, "object" ) ).value_or( 0 );
   if ( what == "load" )
      return LoadCommand{ BoardFiles::Json::textOf( json, "plugin" ),
                          BoardFiles::Json::textOf( json, "topology" ) };
   if ( what == "init" )
      return InitCommand{ kind( json ) };
   if ( what == "read" )
      return ReadCommand{ object };
   if ( what == "act" ) {
      ActCommand act{ object, { .operation = BoardFiles::Json::textOf( json, "operation" ) } };
      for ( const Value &argument :
            BoardFiles::Json::elements( BoardFiles::Json::find( &json, "arguments" ) ) )
         act.action.arguments.push_back( argument.IsInt64() ? argument.GetInt64() : 0 );
      return act;
   }
   if ( what == "add" )
      return AddCommand{ object,
                         { .kind = kind( json ),
                           .name = BoardFiles::Json::textOf( json, "name" ),
                           .text = BoardFiles::Json::textOf( json, "text" ),
                           .alert = number( json, "alert" ),
                           .critical = number( json, "critical" ),
                           .value = static_cast<uint8_t>( number( json, "value" ) ) } };
   return {};
}

std::optional<Event> decodeEvent( const std::string &line ) {
   rapidjson::Document json;
   json.Parse( line.c_str(), line.size() );
   if ( json.HasParseError() )
      return {};
   const std::string what = BoardFiles::Json::textOf( json, "event" );
   if ( what == "begun" )
      return Begun{ BoardFiles::Json::textOf( json, "operation" ) };
   if ( what == "trace" )
      return Trace{ static_cast<int>( number( json, "level" ) ),
                    BoardFiles::Json::textOf( json, "text" ),
                    BoardFiles::Json::toUnsigned( BoardFiles::Json::find( &json, "object" ) ) };
   if ( what == "reading" )
      return toReading( json );
   if ( what == "done" )
      return Done{ BoardFiles::Json::isTrue( BoardFiles::Json::find( &json, "ok" ) )
                      ? std::nullopt
                      : std::optional( toFault( json ) ) };
   return {};
}

} // namespace Host
