// The commands events and acknowledge.
#include "host/Times.h"
#include "host/commands/Commands.h"
#include "host/journal/EventJson.h"
#include "host/journal/EventText.h"
#include "host/journal/Journal.h"
#include "host/serve/Client.h"
#include "host/serve/EventsClient.h"
#include "http/Query.h"
#include "screen/Terminal.h"

#include <algorithm>
#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>
#include <cstdio>
#include <fmt/format.h>
#include <map>
#include <spdlog/spdlog.h>

namespace Host {
namespace {

// What serve gives of its journal; a person rarely wants more.
constexpr size_t mostEvents = 1000;

// The time since when, or the event behind which.
Since sinceIn( const Options &options ) {
   const auto now =
      std::chrono::floor<std::chrono::milliseconds>( std::chrono::system_clock::now() );
   return sinceOf( options.since, now ).value_or( Since{} );
}

std::string objectQuery( const Options &options ) {
   return options.object.empty() ? std::string() : "object=" + Http::urlEncoded( options.object );
}

std::string queryOf( const Options &options ) {
   const Since since = sinceIn( options );
   std::string query = objectQuery( options );
   if ( !options.since.empty() )
      query +=
         ( query.empty() ? "since=" : "&since=" ) +
         Http::urlEncoded( since.time ? timeText( *since.time ) : std::to_string( since.id ) );
   return query;
}

void print( const Options &options, const Health::Event &event ) {
   if ( options.json ) {
      fmt::print( "{}\n", Host::toJson( event ) );
   } else {
      const std::string start =
         fmt::format( "{}  {:13}  ", localTimeText( event.time ), kindOf( event ) );
      const auto columns = Screen::Terminal::width();
      fmt::print(
         "{}{}\n", start,
         textOf( event, columns ? *columns - std::min( *columns, start.size() ) : SIZE_MAX ) );
   }
   std::fflush( stdout );
}

// Without a serve, from the file that the last one has left.
int printFromFile( const Options &options ) {
   const auto file = eventsOf( options );
   if ( options.follow ) {
      spdlog::error( "events --follow needs a running serve, and none runs for {} at {}",
                     options.board.string(), serveSocket().string() );
      return exitUnreadable;
   }
   spdlog::debug( "no serve runs for {}: reads {}", options.board.string(), file.string() );
   const Since since = sinceIn( options );
   try {
      const Journal journal = Journal::toRead( file );
      auto events = journal.events( { .since = since.time,
                                      .after = since.id,
                                      .object = options.object,
                                      .limit = mostEvents,
                                      .newestFirst = since.id == 0 } );
      if ( since.id == 0 )
         std::reverse( events.begin(), events.end() );
      for ( const Health::Event &event : events )
         print( options, event );
   } catch ( const Sqlite::Error &error ) {
      spdlog::error( "no serve runs for {}, and its journal can't be read: {}",
                     options.board.string(), error.what() );
      return exitUnreadable;
   }
   return exitOk;
}

int follow( const Options &options, const Client &serve, uint64_t after ) {
   boost::asio::io_context loop( 1 );
   boost::asio::signal_set signals( loop, SIGINT, SIGTERM, SIGHUP );
   signals.async_wait( [&loop]( const auto &, int ) { loop.stop(); } );
   const FollowedEvents followed(
      loop, serve.socket(), objectQuery( options ), after,
      { .heard = [&]( const Health::Event &event ) { print( options, event ); },
        .lost =
           []( const std::string &why ) {
              spdlog::warn( "serve can't be heard: {}; it is tried again and again", why );
           } } );
   loop.run();
   return exitOk;
}

// The causes that are there, and that no person has acknowledged.
std::vector<std::string> newCauses( const std::vector<Health::Event> &events ) {
   std::map<std::string, Health::Event::What> last;
   for ( const Health::Event &event : events )
      last[event.cause] = event.what;
   std::vector<std::string> causes;
   for ( const auto &[cause, what] : last )
      if ( what == Health::Event::What::Set )
         causes.push_back( cause );
   return causes;
}

} // namespace

int events( const Options &options ) {
   const auto serve = Client::ofBoard( options.board );
   if ( !serve )
      return printFromFile( options );
   spdlog::debug( "asks the serve at {}", serve->socket().string() );
   std::string error;
   const auto known = eventsOf( *serve, queryOf( options ), error );
   if ( !known ) {
      spdlog::error( "{}", error );
      return exitUnreadable;
   }
   for ( const Health::Event &event : *known )
      print( options, event );
   if ( !options.follow )
      return exitOk;
   return follow( options, *serve, known->empty() ? sinceIn( options ).id : known->back().id );
}

int acknowledge( const Options &options ) {
   const auto serve = Client::ofBoard( options.board );
   if ( !serve ) {
      spdlog::error( "acknowledge needs a running serve, and none runs for {} at {}",
                     options.board.string(), serveSocket().string() );
      return exitUnreadable;
   }
   std::string error;
   std::vector<std::string> causes = options.words;
   if ( options.all ) {
      const auto known =
         eventsOf( *serve, fmt::format( "limit={}", Journal::usualCapacity ), error );
      causes = newCauses( known.value_or( std::vector<Health::Event>() ) );
   }
   bool hasFailed = !error.empty();
   if ( hasFailed )
      spdlog::error( "{}", error );
   for ( const std::string &cause : causes ) {
      const std::string why = acknowledge( *serve, cause );
      hasFailed |= !why.empty();
      fmt::print( stderr, "{}\n", why.empty() ? "acknowledged: " + cause : why );
   }
   return hasFailed ? exitUnreadable : exitOk;
}

} // namespace Host
