#include "host/serve/Api.h"

#include "boardfiles/Json.h"
#include "host/JsonWriter.h"
#include "host/serve/EventsApi.h"
#include "host/serve/HistoryApi.h"
#include "host/serve/ModuleJson.h"
#include "host/serve/OpenApi.h"
#include "host/serve/PageApi.h"
#include "host/serve/WhyJson.h"
#include "host/serve/Wiring.h"

#include <algorithm>
#include <fmt/format.h>

namespace Host {
namespace {

using Http::errorResponse;
namespace Status = Http::Status;

constexpr std::string_view objectsPath = "/v1/objects/";
constexpr std::string_view modulesPath = "/v1/modules/";
constexpr std::string_view pagePath = "/panel/";
constexpr std::string_view actionEnd = "/action";
constexpr std::string_view whyEnd = "/why";

Http::Response wrongMethod( std::string_view allow ) {
   Http::Response response =
      errorResponse( Status::methodNotAllowed, fmt::format( "use {}", allow ) );
   response.allow = allow;
   return response;
}

// The words of the body {"words": ["reset", "on"]}. Nothing for any other body.
std::optional<std::vector<std::string>> wordsOf( const std::string &body ) {
   BoardFiles::Findings findings;
   const auto json = BoardFiles::parseJson( body, "body", findings );
   if ( !json || !findings.empty() || json->members().size() != 1 )
      return {};
   const BoardFiles::Json *list = json->find( "words" );
   if ( !list || list->type() != BoardFiles::Json::Type::List )
      return {};
   std::vector<std::string> words;
   for ( const BoardFiles::Json &word : list->elements() ) {
      if ( !word.toText() )
         return {};
      words.emplace_back( *word.toText() );
   }
   return words;
}

Http::Response responseOf( const Reading &result ) {
   JsonWriter json;
   json.beginObject().member( "state", nameOf( result.state ) );
   if ( !std::holds_alternative<std::monostate>( result.value ) )
      std::visit( [&]( const auto &value ) { json.member( "value", value ); }, result.value );
   json.fault( result.fault ).endObject();
   const unsigned status = result.state == State::Ok            ? Status::ok
                           : result.state == State::Unsupported ? Status::notImplemented
                                                                : Status::badGateway;
   return { .status = status, .body = json.text() };
}

} // namespace

Api::Api( const BoardFiles::Board &board, std::string name, Source source )
   : board_( board ), name_( std::move( name ) ), source_( std::move( source ) ) {}

// The longer of two that begin alike comes first.
const Api::Route Api::routes[] = {
   { "/", "GET", &Api::givePage },
   { pagePath, "GET", &Api::givePage },
   { "/healthz", "GET", &Api::giveHealthz },
   { "/metrics", "GET", &Api::giveMetrics },
   { "/openapi.json", "GET", &Api::giveDocument },
   { "/v1/acknowledge", "POST", &Api::acknowledge },
   { "/v1/board", "GET", &Api::giveBoard },
   { "/v1/busses", "GET", &Api::giveBusses },
   { "/v1/events", "GET", &Api::giveEvents },
   { "/v1/health", "GET", &Api::giveHealth },
   { "/v1/history", "GET", &Api::giveHistory },
   { "/v1/live", "GET", &Api::giveLive },

   { "/v1/modules", "GET", &Api::giveModules },
   { modulesPath, "GET", &Api::giveModule },
   { "/v1/objects", "GET", &Api::giveObjects },
   { objectsPath, "", &Api::handleObject },
   { "/v1/panel", "GET", &Api::givePanel },
   { "/v1/topology", "GET", &Api::giveTopology },
   { "/v1/wiring", "GET", &Api::giveWiring },
};

void Api::handle( const Http::Request &request, const Http::Reply &reply ) const {
   const auto *const route =
      std::find_if( std::begin( routes ), std::end( routes ), [&request]( const Route &one ) {
         return one.path.size() > 1 && one.path.ends_with( '/' )
                   ? request.path.starts_with( one.path )
                   : request.path == one.path;
      } );
   if ( route == std::end( routes ) )
      reply( errorResponse( Status::notFound, "no such path: " + request.path ) );
   else if ( !route->method.empty() && request.method != route->method )
      reply( wrongMethod( route->method ) );
   else
      ( this->*route->answer )( request, reply );
}

void Api::givePage( const Http::Request &request, const Http::Reply &reply ) const {
   reply( answerPage( request, request.path == "/"
                                  ? "index.html"
                                  : std::string_view( request.path ).substr( pagePath.size() ) ) );
}

// Tells of this program, not of the board: a balancer or a supervisor wants that.
void Api::giveHealthz( const Http::Request &, const Http::Reply &reply ) const {
   const std::string fault = source_.fault();
   JsonWriter json;
   json.beginObject().member( "status", fault.empty() ? "ok" : "fault" );
   if ( !fault.empty() )
      json.member( "fault", fault );
   json.endObject();
   reply( { .status = fault.empty() ? Status::ok : Status::unavailable, .body = json.text() } );
}

void Api::giveBoard( const Http::Request &, const Http::Reply &reply ) const {
   reply( { .body = toJson( name_, source_.report() ) } );
}

void Api::giveObjects( const Http::Request &, const Http::Reply &reply ) const {
   JsonWriter json;
   json.beginObject().member( "board", name_ ).key( "objects" ).beginList();
   for ( const ObjectReport &object : source_.report() )
      json.beginObject().objectState( object ).endObject();
   reply( { .body = json.endList().endObject().text() } );
}

void Api::giveHealth( const Http::Request &, const Http::Reply &reply ) const {
   reply( { .body = toJson( name_, source_.health() ) } );
}

void Api::giveModules( const Http::Request &, const Http::Reply &reply ) const {
   reply( { .body = toJson( name_, source_.modules() ) } );
}

void Api::giveModule( const Http::Request &request, const Http::Reply &reply ) const {
   const std::string cage = request.path.substr( modulesPath.size() );
   for ( const CageModule &module : source_.modules() )
      if ( module.cage == cage )
         return reply( { .body = toJson( module ) } );
   reply( errorResponse( Status::notFound,
                         fmt::format( "the board has no cage \"{}\" with a \"module\"", cage ) ) );
}

void Api::givePanel( const Http::Request &, const Http::Reply &reply ) const {
   JsonWriter json;
   json.beginObject().member( "board", name_ ).key( "sides" ).beginList();
   for ( const BoardFiles::PanelSide &side : board_.panel ) {
      json.beginObject().member( "name", side.name );
      json.member( "width", side.width ).member( "height", side.height );
      json.key( "places" ).beginList();
      for ( const BoardFiles::PanelPlace &place : side.places ) {
         json.beginObject().member( "object", place.object );
         json.member( "x", place.x ).member( "y", place.y );
         json.member( "width", place.width ).member( "height", place.height ).endObject();
      }
      json.endList().endObject();
   }
   reply( { .body = json.endList().endObject().text() } );
}

void Api::giveTopology( const Http::Request &, const Http::Reply &reply ) const {
   reply( { .body = board_.topology } );
}

void Api::giveWiring( const Http::Request &, const Http::Reply &reply ) const {
   reply( { .body = wiringJson( name_, board_ ) } );
}

void Api::giveBusses( const Http::Request &, const Http::Reply &reply ) const {
   source_.busses( [reply]( std::string json, const std::string &error ) {
      reply( error.empty() ? Http::Response{ .body = std::move( json ) }
                           : errorResponse( Status::unavailable, error ) );
   } );
}

void Api::giveLive( const Http::Request &, const Http::Reply &reply ) const {
   reply( { .stream = source_.live() } );
}

void Api::giveMetrics( const Http::Request &request, const Http::Reply &reply ) const {
   const Metrics::Format format = Metrics::preferredBy( request.accept );
   source_.metrics( format, [format, reply]( std::string text ) {
      reply( { .body = std::move( text ),
               .contentType = std::string( Metrics::contentTypeOf( format ) ) } );
   } );
}

void Api::giveHistory( const Http::Request &request, const Http::Reply &reply ) const {
   reply( answerHistory( request, board_, *source_.history ) );
}

void Api::giveEvents( const Http::Request &request, const Http::Reply &reply ) const {
   reply( answerEvents( request, board_, *source_.events ) );
}

void Api::acknowledge( const Http::Request &request, const Http::Reply &reply ) const {
   reply( Host::acknowledge( request.body, *source_.events ) );
}

void Api::giveDocument( const Http::Request &, const Http::Reply &reply ) const {
   reply( { .body = std::string( openApiDocument ) } );
}

void Api::handleObject( const Http::Request &request, const Http::Reply &reply ) const {
   const std::string rest = request.path.substr( objectsPath.size() );
   const bool isAction = rest.ends_with( actionEnd );
   const bool isWhy = rest.ends_with( whyEnd );
   const size_t end = isAction ? actionEnd.size() : isWhy ? whyEnd.size() : 0;
   const std::string name = rest.substr( 0, rest.size() - end );
   const auto found = std::find_if(
      board_.objects.begin(), board_.objects.end(),
      [&name]( const BoardFiles::ObjectDescription &object ) { return object.name == name; } );
   const auto index = static_cast<size_t>( found - board_.objects.begin() );
   const std::string method = isAction ? "POST" : "GET";
   if ( found == board_.objects.end() )
      reply(
         errorResponse( Status::notFound, fmt::format( "the board has no object \"{}\"", name ) ) );
   else if ( request.method != method )
      reply( wrongMethod( method ) );
   else if ( isAction )
      handleAction( request, index, reply );
   else if ( isWhy )
      source_.why( index, [reply]( const Why &why ) { reply( { .body = toJson( why ) } ); } );
   else
      reply( { .body = toJson( source_.object( index ) ) } );
}

void Api::handleAction( const Http::Request &request, size_t object,
                        const Http::Reply &reply ) const {
   const auto words = wordsOf( request.body );
   if ( !words ) {
      reply( errorResponse( Status::badRequest, R"(the body must be {"words": ["...", ...]})" ) );
      return;
   }
   const auto parsed = parseAction( board_.objects[object].kind, *words );
   if ( const auto *wrong = std::get_if<std::string>( &parsed ) )
      reply( errorResponse( Status::badRequest, *wrong ) );
   else
      source_.ask( object, std::get<Action>( parsed ),
                   [reply]( const Reading &result ) { reply( responseOf( result ) ); } );
}

} // namespace Host
