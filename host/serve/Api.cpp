#include "host/serve/Api.h"

#include "boardfiles/Json.h"
#include "host/JsonWriter.h"
#include "host/serve/EventsApi.h"
#include "host/serve/ModuleJson.h"
#include "host/serve/WhyJson.h"

#include <algorithm>
#include <fmt/format.h>

namespace Host {
namespace {

constexpr std::string_view objectsPath = "/v1/objects/";
constexpr std::string_view modulesPath = "/v1/modules/";
constexpr std::string_view actionEnd = "/action";
constexpr std::string_view whyEnd = "/why";

Api::Response wrongMethod( const std::string &allow ) {
   Api::Response response = errorResponse( HttpStatus::methodNotAllowed, "use " + allow );
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

Api::Response responseOf( const Reading &result ) {
   JsonWriter json;
   json.beginObject().member( "state", nameOf( result.state ) );
   if ( !std::holds_alternative<std::monostate>( result.value ) )
      std::visit( [&]( const auto &value ) { json.member( "value", value ); }, result.value );
   json.fault( result.fault ).endObject();
   const unsigned status = result.state == State::Ok            ? HttpStatus::ok
                           : result.state == State::Unsupported ? HttpStatus::notImplemented
                                                                : HttpStatus::badGateway;
   return { .status = status, .json = json.text() };
}

} // namespace

Api::Response errorResponse( unsigned status, std::string_view words ) {
   return { .status = status,
            .json = JsonWriter().beginObject().member( "error", words ).endObject().text() };
}

Api::Api( const BoardFiles::Board &board, std::string name, Source source )
   : board_( board ), name_( std::move( name ) ), source_( std::move( source ) ) {}

void Api::handle( const Request &request, const Reply &reply ) const {
   const bool isGet = request.method == "GET";
   if ( request.path == "/v1/board" )
      reply( isGet ? Response{ .json = toJson( name_, source_.report() ) } : wrongMethod( "GET" ) );
   else if ( request.path == "/v1/health" )
      reply( isGet ? Response{ .json = toJson( name_, source_.health() ) } : wrongMethod( "GET" ) );
   else if ( request.path == "/v1/modules" )
      reply( isGet ? Response{ .json = toJson( name_, source_.modules() ) }
                   : wrongMethod( "GET" ) );
   else if ( request.path.starts_with( modulesPath ) )
      reply( isGet ? moduleIn( request.path.substr( modulesPath.size() ) ) : wrongMethod( "GET" ) );
   else if ( request.path == "/v1/topology" )
      reply( isGet ? Response{ .json = board_.topology } : wrongMethod( "GET" ) );
   else if ( request.path == "/v1/busses" && !isGet )
      reply( wrongMethod( "GET" ) );
   else if ( request.path == "/v1/busses" )
      source_.busses( [reply]( std::string json, const std::string &error ) {
         reply( error.empty() ? Response{ .json = std::move( json ) }
                              : errorResponse( HttpStatus::unavailable, error ) );
      } );
   else if ( request.path == "/v1/events" )
      reply( isGet ? answerEvents( request, board_, events() ) : wrongMethod( "GET" ) );
   else if ( request.path == "/v1/acknowledge" )
      reply( request.method == "POST" ? acknowledge( request.body, events() )
                                      : wrongMethod( "POST" ) );
   else if ( request.path.starts_with( objectsPath ) )
      handleObject( request, request.path.substr( objectsPath.size() ), reply );
   else
      reply( errorResponse( HttpStatus::notFound, "no such path: " + request.path ) );
}

Api::Response Api::moduleIn( const std::string &cage ) const {
   for ( const CageModule &module : source_.modules() )
      if ( module.cage == cage )
         return { .json = toJson( module ) };
   return errorResponse( HttpStatus::notFound,
                         fmt::format( "the board has no cage \"{}\" with a \"module\"", cage ) );
}

void Api::handleObject( const Request &request, const std::string &rest,
                        const Reply &reply ) const {
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
      reply( errorResponse( HttpStatus::notFound,
                            fmt::format( "the board has no object \"{}\"", name ) ) );
   else if ( request.method != method )
      reply( wrongMethod( method ) );
   else if ( isAction )
      handleAction( request, index, reply );
   else if ( isWhy )
      source_.why( index, [reply]( const Why &why ) { reply( { .json = toJson( why ) } ); } );
   else
      reply( { .json = toJson( source_.object( index ) ) } );
}

void Api::handleAction( const Request &request, size_t object, const Reply &reply ) const {
   const auto words = wordsOf( request.body );
   if ( !words ) {
      reply(
         errorResponse( HttpStatus::badRequest, R"(the body must be {"words": ["...", ...]})" ) );
      return;
   }
   const auto parsed = parseAction( board_.objects[object].kind, *words );
   if ( const auto *wrong = std::get_if<std::string>( &parsed ) )
      reply( errorResponse( HttpStatus::badRequest, *wrong ) );
   else
      source_.ask( object, std::get<Action>( parsed ),
                   [reply]( const Reading &result ) { reply( responseOf( result ) ); } );
}

} // namespace Host
