#include "host/commands/CommandSession.h"
#include "host/commands/Commands.h"
#include "host/serve/Api.h"
#include "host/serve/BoardMetrics.h"
#include "host/serve/Client.h"
#include "host/serve/Events.h"
#include "host/serve/HealthWatch.h"
#include "host/serve/LastLoads.h"
#include "host/serve/LastSettings.h"
#include "host/serve/LeaseHolder.h"
#include "host/serve/LiveBoard.h"
#include "host/serve/LiveClock.h"
#include "host/serve/ServerAccounts.h"
#include "host/serve/StateLog.h"
#include "host/serve/SystemLog.h"
#include "host/session/ServerProbe.h"
#include "http/Server.h"
#include "sockets/Heartbeat.h"

#include <algorithm>
#include <fmt/ranges.h>
#include <map>
#include <memory>
#include <spdlog/spdlog.h>
#include <unistd.h>

namespace Host {
namespace {

// On the Unix socket; on those that the system's manager has opened; and at an address, if one is
// wanted.
std::vector<std::unique_ptr<Http::Server>>
serversOf( boost::asio::io_context &loop, const Http::Handler &handler, const Options &options ) {
   const Http::Guard guard =
      options.httpControl.empty() ? Http::Guard() : Http::Guard( options.httpControl );
   const Sockets::ControlGroup group( options.controlGroup );
   std::vector<Http::Listener> listeners;
   listeners.push_back( Http::Listener::atFile( serveSocket() ) );
   for ( Http::Listener &given : Http::Listener::given() )
      listeners.push_back( std::move( given ) );
   if ( !options.http.empty() )
      listeners.push_back( Http::Listener::atAddress( options.http, options.httpAnyAddress ) );
   std::vector<std::unique_ptr<Http::Server>> servers;
   for ( Http::Listener &listener : listeners )
      servers.push_back( std::make_unique<Http::Server>( loop, std::move( listener ), handler,
                                                         Http::Limits(), guard, group ) );
   return servers;
}

// A board that the server watches over: what it takes for that, and what comes after it.
struct Guarded {
   Guarded( const BoardFiles::Board &of, CommandSession &session, const ServerAccounts &accounts,
            Events &events, const Options &options )
      : board( of ), settings( of, eventsOf( options ).replace_extension( ".set" ) ),
        lease( *of.safeState, fromSeconds( options.limit ) ),
        holder(
           session.loop(), accounts, lease,
           { .inControl = [&session] { return session.supervisor().inControl( Clock::now() ); },
             .ran = [this, &session, &events] { setAgain( session, events ); } } ) {}

   void setAgain( CommandSession &session, Events &events ) const {
      events.add( { { .time = instantNow().wall,
                      .what = Health::Event::What::Note,
                      .cause = "safe state",
                      .level = Health::Level::Warning,
                      .words = fmt::format( "the server had set it, since it did not hear of this "
                                            "host for {} s; set again: {}",
                                            lease.time() / std::chrono::seconds( 1 ),
                                            settings.words() ) } } );
      for ( const auto &[object, action] : settings.actions() )
         session.ask( object, action, [name = board.objects[object].name]( const Reading &result ) {
            if ( result.state != State::Ok )
               spdlog::error( "{} can't be set again: {}", name, toText( result.fault ) );
         } );
   }

   const BoardFiles::Board &board;
   LastSettings settings;
   const Lease lease;
   const LeaseHolder holder;
};

} // namespace

int serve( const BoardFiles::Board &board, const Options &options ) {
   CommandSession session( board, options, CommandSession::Source::Own );
   const ServerAccounts accounts( session.loop(), serverSocket( board.server ) );
   Events events( eventsOf( options ), isSystemLog( STDERR_FILENO )
                                          ? Events::SystemLog( toSystemLog )
                                          : Events::SystemLog() );
   // So long everything that a fault takes with it was read, and an empty slot was recognised:
   // drivers keep what they have read of a module's presence for a second or two.
   const double settle = std::max( 3.0, 3 * options.period );
   HealthWatch watch( board, accounts, settle,
                      [&events]( const auto &news ) { events.add( news ); } );
   watch.monitor().resume( events.events( {} ), instantNow() );
   events.acknowledgeWith( [&]( const std::string &cause ) {
      const auto causes = watch.monitor().causes();
      const auto known = std::find_if( causes.begin(), causes.end(),
                                       [&]( const auto &one ) { return one.key == cause; } );
      if ( known == causes.end() || !watch.monitor().acknowledge( cause, instantNow() ) )
         return false;
      events.add( { { .time = instantNow().wall,
                      .what = Health::Event::What::Acknowledged,
                      .cause = cause,
                      .object = known->object,
                      .value = known->value,
                      .level = known->level,
                      .words = known->words } } );
      return true;
   } );
   History::Store history;
   const auto report = [&] {
      BoardReport described = session.report();
      watch.monitor().describe( described );
      return described;
   };
   // A scrape has to end within 10 ms, also when the server is busy; the text takes 3 ms.
   LastLoads loads( session.loop(), accounts, std::chrono::milliseconds( 5 ) );
   LiveBoard live(
      serveName( board.folder ),
      { .report = report,
        .level = [&] { return watch.monitor().level(); },
        .causes = [&] { return watch.monitor().causes(); },
        .fault = [&] { return session.plugInFault(); },
        .events = [&]( const Journal::Query &query ) { return events.events( query ); },
        .lastEvent = [&] { return events.lastId(); },
        .askLoads = [&]( auto answer ) { accounts.askLoads( std::move( answer ) ); },
        .canAct = !options.httpControl.empty() } );
   LiveClock liveClock( session.loop(), std::chrono::seconds( 1 ), [&] { return live.tick(); } );
   std::map<unsigned, uint64_t> answers; // to HTTP requests, by their status code
   const Api api(
      board, serveName( board.folder ),
      { .report = report,
        .object =
           [&]( size_t i ) {
              ObjectReport object = report().at( i );
              watch.monitor().addLast( i, object );
              return object;
           },
        .health = [&] { return healthOf( watch.monitor(), report() ); },
        .modules = [&] { return session.modules(); },
        .why =
           [&]( size_t i, std::function<void( const Why & )> ready ) {
              BoardReport known = report();
              watch.monitor().addLast( i, known.at( i ) );
              Why why = whyOf( board, i, known, healthOf( watch.monitor(), known ) );
              why.board = serveName( board.folder );
              why.events = events.events( { .object = board.objects[i].name,
                                            .limit = mostEventsOfWhy,
                                            .newestFirst = true } );
              std::reverse( why.events.begin(), why.events.end() );
              accounts.addTransfers( std::move( why ), std::move( ready ) );
           },
        .ask =
           [&session]( size_t object, const Action &action,
                       std::function<void( const Reading & )> answer ) {
              session.ask( object, action, std::move( answer ) );
           },
        .busses =
           [&accounts]( ServerAccounts::Answer answer ) { accounts.ask( std::move( answer ) ); },
        .metrics =
           [&]( Metrics::Format format, std::function<void( std::string )> ready ) {
              loads.ask( [&, format, ready = std::move( ready )]( const KnownLoads &known ) {
                 ready( boardMetrics( { .board = board,
                                        .name = serveName( board.folder ),
                                        .report = report(),
                                        .level = watch.monitor().level(),
                                        .causes = watch.monitor().causes(),
                                        .rules = watch.monitor().rules(),
                                        .events = events.counts(),
                                        .serve = serveFigures( session.supervisor(), answers ),
                                        .loads = known },
                                      format ) );
              } );
           },
        .live =
           [&] {
              liveClock.start();
              return liveStreamOf( live );
           },
        .fault = [&] { return session.plugInFault(); },
        .events = &events,
        .history = &history } );
   const auto handler = [&]( const Http::Request &request, const Http::Reply &reply ) {
      api.handle( request, [&answers, reply]( const Http::Response &response ) {
         ++answers[response.status];
         reply( response );
      } );
   };
   const std::vector<std::unique_ptr<Http::Server>> servers =
      serversOf( session.loop(), handler, options );
   std::optional<Guarded> guarded;
   if ( board.safeState )
      guarded.emplace( board, session, accounts, events, options );
   StateLog log;
   std::vector<std::string> names;
   for ( const auto &server : servers )
      names.push_back( server->name() );
   spdlog::info( "serving {} with {} objects at {}", board.folder, board.objects.size(),
                 fmt::join( names, " and " ) );
   for ( const auto &server : servers )
      if ( !server->isLocal() )
         spdlog::info( "the front panel is at http://{}/", server->name() );
   session.onUpdate(
      [&] {
         const BoardReport now = session.report();
         history.add( now, instantNow() );
         if ( guarded )
            guarded->settings.look( now );
         for ( const StateLog::Line &line : log.changes( now, session.hadRound() ) )
            spdlog::log( line.isFault ? spdlog::level::warn : spdlog::level::info, "{}",
                         line.text );
         for ( size_t i = 0; i < board.objects.size(); ++i )
            if ( const auto &limits = session.limits( i ); !limits.empty() )
               watch.knows( i, limits );
         for ( size_t i = 0; i < board.objects.size(); ++i )
            if ( const ModuleRecord *module = session.module( i ) )
               watch.knows( i, module->limits );
         if ( session.hadRound() )
            watch.look( now, session.plugInFault() );
      },
      true );
   const Sockets::Heartbeat heartbeat( session.loop() );
   return session.run();
}

} // namespace Host
