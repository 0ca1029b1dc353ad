#include "view/Stay.h"

#include "view/Commands.h"
#include "view/Log.h"

#include <csignal>
#include <spdlog/spdlog.h>

namespace Host {

Stay::Stay( const Board &board, const Options &options )
   : period_( fromSeconds( options.period ) ), signals_( loop_, SIGINT, SIGTERM, SIGHUP ),
     session_( loop_, board, options.plugin,
               Limits{ .step = fromSeconds( options.limit ), .period = period_ },
               logging( options, [this] { changed(); } ) ) {
   signals_.async_wait( [this]( const auto &, int signal ) {
      spdlog::info( "ends on signal {}", signal );
      stop();
   } );
}

void Stay::tellWith( std::function<void()> tell, bool byRound ) {
   tell_ = std::move( tell );
   byRound_ = byRound;
   tellLater();
}

int Stay::run( const std::function<void()> &leave ) {
   loop_.run();
   leave();
   const auto &fault = session_.supervisor().loadFault();
   return fault ? tellLoadFault( *fault ) : exitOk;
}

void Stay::changed() {
   if ( session_.supervisor().loadFault() )
      stop();
   else if ( byRound_ && session_.supervisor().roundDone() )
      tell();
}

void Stay::tell() {
   tell_();
   tellLater();
}

void Stay::tellLater() {
   // A round is done a little later than a period after the one before it.
   timer_.expires_after( byRound_ ? period_ * 3 / 2 : period_ );
   timer_.async_wait( [this]( const auto &failure ) {
      if ( !failure )
         tell();
   } );
}

} // namespace Host
