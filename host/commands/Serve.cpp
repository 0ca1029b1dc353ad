#include "host/commands/CommandSession.h"
#include "host/commands/Commands.h"
#include "host/serve/Client.h"
#include "host/serve/HttpServer.h"

#include <map>
#include <spdlog/spdlog.h>

namespace Host {
namespace {

// Logs the state of every object and value when it changes.
class StateLog {
 public:
   void record( const BoardReport &board ) {
      for ( const ObjectReport &object : board ) {
         record( object.name, object.state, object.fault );
         for ( const ValueReport &value : object.values )
            record( object.name + " " + value.reading.name, value.reading.state,
                    value.reading.fault );
      }
   }

 private:
   void record( const std::string &what, State state, const Fault &fault ) {
      const bool bad = state == State::Unreadable;
      std::string entry( nameOf( state ) );
      if ( bad )
         entry += ": " + toText( fault );
      std::string &last = entries_[what];
      if ( last == entry )
         return;
      last = entry;
      spdlog::log( bad ? spdlog::level::warn : spdlog::level::info, "{}: {}", what, entry );
   }

   std::map<std::string, std::string> entries_{};
};

} // namespace

int serve( const BoardFiles::Board &board, const Options &options ) {
   CommandSession session( board, options, CommandSession::Source::Own );
   const Api api( board, serveName( board.folder ),
                  { .report = [&session] { return session.report(); },
                    .ask =
                       [&session]( size_t object, const Action &action,
                                   std::function<void( const Reading & )> answer ) {
                          session.ask( object, action, std::move( answer ) );
                       } } );
   const HttpServer server( session.loop(), serveSocket(), api );
   StateLog log;
   spdlog::info( "serving {} with {} objects at {}", board.folder, board.objects.size(),
                 serveSocket().string() );
   session.onUpdate( [&] { log.record( session.report() ); }, false );
   return session.run();
}

} // namespace Host
