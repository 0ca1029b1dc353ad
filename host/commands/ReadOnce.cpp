#include "host/commands/ReadOnce.h"

#include "host/commands/Commands.h"
#include "host/serve/HealthWatch.h"
#include "host/session/CageModules.h"
#include "host/session/ServerProbe.h"
#include "host/terminal/Progress.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <spdlog/spdlog.h>
#include <unistd.h>

namespace Host {
namespace {

BoardOnce readAll( const BoardFiles::Board &board, const Options &options ) {
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
   BoardOnce once{ .report = session->supervisor().report( Clock::now() ),
                   .loadFault = session->supervisor().loadFault(),
                   .gaveUp = gaveUp };
   once.modules = modulesOf( board, session->supervisor(), once.report, Clock::now() );
   loop.restart();
   const ServerAccounts accounts( loop, serverSocket( board.server ) );
   // There is no second round that could say more.
   HealthWatch watch( board, accounts, 0, [&loop]( const auto & ) { loop.stop(); } );
   for ( size_t i = 0; i < board.objects.size(); ++i )
      if ( const ModuleRecord *module = session->supervisor().module( i ) )
         watch.knows( i, module->limits );
   watch.look( once.report, session->supervisor().plugInFault() );
   loop.run();
   watch.monitor().describe( once.report );
   once.health = healthOf( watch.monitor(), once.report );
   return once;
}

} // namespace

BoardOnce readOnce( const BoardFiles::Board &board, const Options &options,
                    const std::string &module ) {
   return readAll( BoardFiles::withoutModules( board, module ), options );
}

BoardOnce readModulesOnce( const BoardFiles::Board &board, const std::string &cage,
                           const Options &options ) {
   BoardFiles::Board reduced = board;
   reduced.rules.clear();
   std::erase_if( reduced.objects, [&]( const BoardFiles::ObjectDescription &object ) {
      const bool isCage = object.kind == BoardFiles::Kind::Xcvr && object.name == cage;
      const bool isModule = object.kind == BoardFiles::Kind::Module && object.health.in == cage;
      return cage.empty()
                ? object.kind != BoardFiles::Kind::Xcvr && object.kind != BoardFiles::Kind::Module
                : !isCage && !isModule;
   } );
   return readAll( reduced, options );
}

} // namespace Host
