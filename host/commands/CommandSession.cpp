#include "host/commands/CommandSession.h"

#include "host/commands/Commands.h"

#include <algorithm>
#include <boost/asio/post.hpp>
#include <csignal>
#include <spdlog/spdlog.h>

namespace Host {

namespace {

Limits limitsOf( const Options &options ) {
   Limits limits{ .step = fromSeconds( options.limit ), .period = fromSeconds( options.period ) };
   limits.periods[BoardFiles::Kind::Module] =
      std::max( fromSeconds( BoardFiles::periodOfModules ), limits.period );
   for ( const auto &[kind, seconds] : options.periods )
      limits.periods[kind] = fromSeconds( seconds );
   return limits;
}

} // namespace

CommandSession::CommandSession( const BoardFiles::Board &board, const Options &options,
                                Source source )
   : period_( fromSeconds( options.period ) ), signals_( loop_, SIGINT, SIGTERM, SIGHUP ),
     board_( board ), options_( options ) {
   signals_.async_wait( [this]( const auto &, int signal ) {
      spdlog::info( "ending on signal {}", signal );
      stop();
   } );
   if ( source == Source::ServeIfThere )
      serve_ = Client::ofBoard( board.folder );
   if ( serve_ )
      spdlog::debug( "asks the serve at {}", serve_->socket().string() );
   else
      bringUp();
}

void CommandSession::bringUp() {
   spdlog::debug( "no serve runs for {}: this command brings the board up", board_.folder );
   session_.emplace( loop_, board_, options_.plugin, limitsOf( options_ ),
                     logging( options_, [this] { changed(); } ) );
}

void CommandSession::leaveServe() {
   spdlog::warn( "the serve at {} has ended", serve_->socket().string() );
   serve_.reset();
   bringUp();
}

bool CommandSession::returnToServe() {
   serve_ = Client::ofBoard( board_.folder );
   if ( !serve_ )
      return false;
   spdlog::info( "asks the serve at {} again", serve_->socket().string() );
   hadRound_ = false;
   // The session may be what calls this.
   boost::asio::post( loop_, [this] { session_.reset(); } );
   return true;
}

BoardReport CommandSession::report() {
   if ( serve_ ) {
      if ( auto report = serve_->report() )
         return *report;
      leaveServe();
   }
   return session_->supervisor().report( Clock::now() );
}

void CommandSession::onUpdate( std::function<void()> update, bool byRound ) {
   update_ = std::move( update );
   byRound_ = byRound;
   updateLater();
}

int CommandSession::run( const std::function<void()> &leave ) {
   loop_.run();
   leave();
   const auto fault = session_ ? session_->supervisor().loadFault() : std::nullopt;
   return fault ? reportLoadFault( *fault ) : exitOk;
}

void CommandSession::changed() {
   const bool roundDone = session_->supervisor().roundDone();
   hadRound_ |= roundDone;
   if ( session_->supervisor().loadFault() )
      stop();
   else if ( byRound_ && ( ( roundDone && session_->supervisor().rounds() != updatedRound_ ) ||
                           ( hadRound_ && plugInFault() != updatedFault_ ) ) )
      update();
}

void CommandSession::update() {
   if ( session_ ) {
      updatedRound_ = session_->supervisor().rounds();
      updatedFault_ = plugInFault();
   }
   update_();
   updateLater();
}

void CommandSession::updateLater() {
   // A round ends a little more than a period after the round before it.
   timer_.expires_after( byRound_ && session_ ? period_ * 3 / 2 : period_ );
   timer_.async_wait( [this]( const auto &failure ) {
      if ( !failure )
         update();
   } );
}

} // namespace Host
