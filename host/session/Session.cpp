#include "host/session/Session.h"

#include "host/session/ServerProbe.h"

#include <boost/asio/post.hpp>
#include <stdexcept>

namespace Host {

Session::Session( boost::asio::io_context &loop, const BoardFiles::Board &board, std::string plugin,
                  Limits limits, Handlers handlers )
   : loop_( loop ), board_( board ), plugin_( std::move( plugin ) ),
     handlers_( std::move( handlers ) ),
     supervisor_( board, limits, Clock::now(), [&board] { return whyNoServer( board.server ); } ),
     timer_( loop ) {
   boost::asio::post( loop_, [this] { pump(); } );
}

void Session::pump() {
   const Time now = Clock::now();
   noteOperation();
   supervisor_.tick( now );
   if ( !child_ && supervisor_.wantsChild( now ) )
      startChild();
   if ( const auto why = supervisor_.overdue( now ); child_ && why && whyKilled_.empty() ) {
      whyKilled_ = *why;
      child_->kill();
   }
   if ( child_ )
      if ( auto command = supervisor_.next( now ) ) {
         if ( auto *load = std::get_if<LoadCommand>( &*command ) ) {
            load->plugin = plugin_;
            load->traces = { handlers_.traceLevel, board_.traces.beginnings() };
         }
         child_->send( *command );
      }
   timer_.expires_at( supervisor_.wakeAt( now ) );
   timer_.async_wait( [this]( const auto &failure ) {
      if ( !failure )
         pump();
   } );
}

void Session::noteOperation() {
   if ( child_ )
      supervisor_.operationIs( child_->operation(), Clock::now() );
}

std::string Session::operation() {
   noteOperation();
   return supervisor_.operation();
}

void Session::ask( size_t object, const Action &action, Supervisor::Answer answer ) {
   supervisor_.ask( object, action, std::move( answer ), Clock::now() );
   pump();
}

void Session::startChild() {
   whyKilled_.clear();
   try {
      child_ = std::make_unique<ChildProcess>(
         loop_, ChildProcess::Handlers{
                   .event = [this]( const Event &event ) { heard( event ); },
                   .errorLine = [this]( const std::string &line ) { handlers_.notice( line ); },
                   .died = [this]( const std::string &cause ) { died( cause ); } } );
   } catch ( const std::runtime_error &failure ) {
      const std::string why =
         std::string( "the plug-in's process can't be started: " ) + failure.what();
      if ( !hadChild_ )
         throw std::runtime_error( why );
      handlers_.notice( why );
      supervisor_.childNotStarted( why, Clock::now() );
      return;
   }
   hadChild_ = true;
   supervisor_.childStarted();
}

void Session::heard( const Event &event ) {
   if ( const auto *trace = std::get_if<Trace>( &event ) )
      handlers_.trace( *trace );
   supervisor_.heard( event, Clock::now() );
   if ( !std::holds_alternative<Done>( event ) || supervisor_.isRunning() )
      return;
   pump();
   handlers_.changed();
}

void Session::died( const std::string &cause ) {
   const std::string why = whyKilled_.empty() ? cause : whyKilled_;
   handlers_.notice( "the plug-in's process ended: " + why );
   noteOperation();
   child_.reset();
   supervisor_.childDied( why, Clock::now() );
   pump();
   handlers_.changed();
}

} // namespace Host
