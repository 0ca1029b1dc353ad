#include "host/JsonWriter.h"
#include "host/commands/Commands.h"
#include "host/serve/Client.h"
#include "host/terminal/Progress.h"
#include "host/terminal/Table.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <fmt/format.h>
#include <optional>
#include <spdlog/spdlog.h>
#include <unistd.h>

namespace Host {
namespace {

int print( const BoardFiles::Board &board, const Options &options, const BoardReport &report ) {
   if ( options.json )
      fmt::print( "{}\n", Host::toJson( board.folder, report ) );
   else
      fmt::print( "{}\n", fmt::join( tableOf( report ), "\n" ) );
   return hasUnreadable( report ) ? exitUnreadable : exitOk;
}

} // namespace

int show( const BoardFiles::Board &board, const Options &options ) {
   if ( const auto client = Client::ofBoard( board.folder ) )
      if ( const auto report = client->report() ) {
         spdlog::debug( "asks the serve at {}", client->socket().string() );
         return print( board, options, *report );
      }
   spdlog::debug( "no serve runs for {}: this command brings the board up", board.folder );
   boost::asio::io_context loop{ 1 };
   std::optional<Session> session;
   std::optional<Progress> progress( std::in_place, ::isatty( STDERR_FILENO ), Clock::now() );
   const auto showProgress = [&] {
      const Supervisor &known = session->supervisor();
      progress->update( known.settled(), board.objects.size(), session->operation(), Clock::now() );
   };
   const auto changed = [&] {
      showProgress();
      if ( session->supervisor().roundDone() || session->supervisor().loadFault() )
         loop.stop();
   };
   session.emplace( loop, board, options.plugin,
                    Limits{ .init = initLimit, .step = fromSeconds( options.limit ), .once = true },
                    logging( options, changed ) );
   boost::asio::steady_timer isLong( loop, Progress::patience ); // one operation may take longer
   isLong.async_wait( [&]( const auto & ) { showProgress(); } );
   boost::asio::steady_timer giveUp( loop, totalLimit );
   bool gaveUp = false;
   giveUp.async_wait( [&]( const auto & ) {
      gaveUp = true;
      loop.stop();
   } );
   loop.run();
   progress.reset();
   if ( session->supervisor().loadFault() )
      return reportLoadFault( *session->supervisor().loadFault() );

   const BoardReport report = session->supervisor().report( Clock::now() );
   const int exitCode = print( board, options, report );
   if ( gaveUp )
      spdlog::error( "gave up after {} s", totalLimit.count() );
   return gaveUp ? exitUnreadable : exitCode;
}

} // namespace Host
