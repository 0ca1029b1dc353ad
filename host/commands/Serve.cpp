#include "host/commands/CommandSession.h"
#include "host/commands/Commands.h"
#include "host/serve/Client.h"
#include "host/serve/HttpServer.h"
#include "host/serve/ServerAccounts.h"
#include "host/serve/StateLog.h"
#include "host/session/ServerProbe.h"

#include <spdlog/spdlog.h>

namespace Host {

int serve( const BoardFiles::Board &board, const Options &options ) {
   CommandSession session( board, options, CommandSession::Source::Own );
   const ServerAccounts accounts( session.loop(), serverSocket( board.server ) );
   const Api api(
      board, serveName( board.folder ),
      { .report = [&session] { return session.report(); },
        .ask =
           [&session]( size_t object, const Action &action,
                       std::function<void( const Reading & )> answer ) {
              session.ask( object, action, std::move( answer ) );
           },
        .busses = [&accounts](
                     ServerAccounts::Answer answer ) { accounts.ask( std::move( answer ) ); } } );
   const HttpServer server( session.loop(), serveSocket(), api );
   StateLog log;
   spdlog::info( "serving {} with {} objects at {}", board.folder, board.objects.size(),
                 serveSocket().string() );
   session.onUpdate(
      [&] {
         for ( const StateLog::Line &line : log.changes( session.report(), session.hadRound() ) )
            spdlog::log( line.isFault ? spdlog::level::warn : spdlog::level::info, "{}",
                         line.text );
      },
      false );
   return session.run();
}

} // namespace Host
