#include "host/serve/EventsApi.h"

#include "boardfiles/Json.h"
#include "host/JsonWriter.h"
#include "host/Times.h"
#include "host/journal/EventJson.h"
#include "host/serve/EventStream.h"
#include "host/serve/Events.h"
#include "http/Query.h"

#include <algorithm>
#include <fmt/format.h>

namespace Host {
namespace {

using Http::errorResponse;
namespace Status = Http::Status;

constexpr size_t usualLimit = 1000;

// What a query asks the journal for; or an error text.
class EventsQuery {
 public:
   Journal::Query wanted{ .limit = usualLimit, .newestFirst = true };
   bool isSince = false;
   std::string error{};

   EventsQuery( const std::string &query, const BoardFiles::Board &board ) {
      const auto values = Http::parseQuery( query );
      if ( !values ) {
         error = "the query is not valid: behind each % two hexadecimal digits are needed";
         return;
      }
      for ( const auto &[name, value] : *values )
         take( name, value, board );
   }

 private:
   void take( const std::string &name, const std::string &value, const BoardFiles::Board &board ) {
      if ( name == "since" )
         takeSince( value );
      else if ( name == "object" )
         takeObject( value, board );
      else if ( name == "limit" )
         takeLimit( value );
      else
         error =
            fmt::format( "unknown \"{}\" in the query; known are since, object and limit", name );
   }
   void takeSince( const std::string &value ) {
      const auto since = sinceOf(
         value, std::chrono::floor<std::chrono::milliseconds>( std::chrono::system_clock::now() ) );
      if ( !since ) {
         error = fmt::format( "since is \"{}\"; it must be {}", value, sinceForms );
         return;
      }
      isSince = true;
      wanted.since = since->time;
      wanted.after = since->id;
      // A client that knows an event goes on behind it.
      wanted.newestFirst = since->time.has_value();
   }
   void takeObject( const std::string &value, const BoardFiles::Board &board ) {
      wanted.object = value;
      if ( std::none_of( board.objects.begin(), board.objects.end(),
                         [&]( const auto &object ) { return object.name == value; } ) )
         error = fmt::format( "the board has no object \"{}\"", value );
   }
   void takeLimit( const std::string &value ) {
      const auto limit = Http::wholeNumber( value );
      if ( !limit || *limit < 1 || *limit > Journal::usualCapacity )
         error = fmt::format( "limit is \"{}\"; it must be from 1 to {}", value,
                              Journal::usualCapacity );
      wanted.limit = limit.value_or( usualLimit );
   }
};

Http::Response startOfStream( const Http::Request &request, EventsQuery query, Events &events ) {
   if ( !request.lastEventId.empty() ) {
      const auto last = Http::wholeNumber( request.lastEventId );
      if ( !last )
         return errorResponse(
            Status::badRequest,
            fmt::format( "Last-Event-ID is \"{}\"; it must be the id of an event",
                         request.lastEventId ) );
      // A higher one is of a journal that is gone.
      query.wanted.after = *last <= events.lastId() ? *last : 0;
      query.wanted.since.reset();
   } else if ( !query.isSince ) {
      query.wanted.after = events.lastId();
   }
   query.wanted.newestFirst = false;
   return { .stream = streamOf( events, query.wanted ) };
}

} // namespace

Http::Response answerEvents( const Http::Request &request, const BoardFiles::Board &board,
                             Events &events ) {
   const EventsQuery query( request.query, board );
   if ( !query.error.empty() )
      return errorResponse( Status::badRequest, query.error );
   if ( request.accept.find( "text/event-stream" ) != request.accept.npos )
      return startOfStream( request, query, events );
   std::vector<Health::Event> found = events.events( query.wanted );
   if ( query.wanted.newestFirst )
      std::reverse( found.begin(), found.end() );
   std::string json;
   for ( const Health::Event &event : found )
      json += ( json.empty() ? "" : "," ) + toJson( event );
   return { .body = "{\"events\":[" + json + "]}" };
}

Http::Response acknowledge( const std::string &body, const Events &events ) {
   BoardFiles::Findings findings;
   const auto json = BoardFiles::parseJson( body, "body", findings );
   const auto cause = json && findings.empty() && json->members().size() == 1
                         ? json->textOf( "cause" )
                         : std::nullopt;
   if ( !cause )
      return errorResponse( Status::badRequest, R"(the body must be {"cause": "..."})" );
   if ( !events.acknowledge( *cause ) )
      return errorResponse( Status::notFound,
                            fmt::format( "there is no cause \"{}\" now", *cause ) );
   return { .body = R"({"state":"ok"})" };
}

} // namespace Host
